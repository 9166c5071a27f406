#pragma once

// True when the site reports in SI units: the setting "SI Unit" of the suite's
// common key reads as the number 1 ("0" & value, so a missing or empty value
// reads as 0). Read afresh at every call, never cached.
bool ReadSIUnitSetting();
