#pragma once

#include <QString>

// The setting "QC Rules" of the suite's common key: the QC rules the reports
// are checked against, as the site lists them ("1-3s, 2-2s, R-4s"; see
// QCRuleSet). Empty when the value is missing or empty: rule checking is off.
// Read afresh at every call, never cached.
QString ReadQCRulesSetting();
