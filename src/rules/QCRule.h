#pragma once

// The QC rules a chart's visits can be checked against, in the order the
// program lists them. Each is named in the settings as QCRuleSet::name gives:
//
// - Rule12s "1-2s": one reading beyond mean +/- 2 SD (the warning rule);
// - Rule13s "1-3s": one reading beyond mean +/- 3 SD;
// - Rule22s "2-2s": two readings in a row beyond 2 SD on the same side;
// - RuleR4s "R-4s": two readings in a row beyond 2 SD on opposite sides;
// - Rule41s "4-1s": four readings in a row beyond 1 SD on the same side;
// - Rule10x "10x": ten readings in a row on the same side of the mean;
// - RuleDlco12 "DLCO-12": a DLCO reading more than 12 % or more than 3
//   mL/min/mmHg (1 mmol/min/kPa) away from the mean.
//
// QCRuleEvaluator says exactly how each is applied.
enum class QCRule
{
    Rule12s,
    Rule13s,
    Rule22s,
    RuleR4s,
    Rule41s,
    Rule10x,
    RuleDlco12
};
