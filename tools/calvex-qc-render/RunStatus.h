#pragma once

// The exit status of calvex-qc-render, and how a run of many reports (--all)
// arrives at one: every report, and every refusal on the way, meets a status,
// and the run ends with the worst one met.
//
//   RunStatus status;
//   status.meet(RunStatus::Done);
//   status.meet(RunStatus::Failed);
//   return status.value(); // Failed
//
// A status other than those below ranks by its number among the statuses
// that are not failures, so a status a new option adds for a finding (above
// 2) is worse than Done and better than Failed: a run that could not do
// everything never ends as if it had done everything.
class RunStatus final
{
public:
    // Everything asked for was done.
    static constexpr int Done = 0;
    // A report could not be rendered or written (the reason is on stderr).
    static constexpr int Failed = 1;
    // The command line is wrong, or names a QC rule the program does not know.
    static constexpr int BadCommandLine = 2;
    // --check: a QC rule was broken (a finding, not a failure).
    static constexpr int RulesBroken = 3;

    // Keeps the worse of the status so far and status.
    void meet(int status);
    int value() const { return m_value; }

    // The worse of two statuses: a bad command line, then a failure, then any
    // other status by its number, then Done.
    static int worse(int a, int b);

private:
    static int rank(int status);

    int m_value = Done;
};
