#pragma once

// ReadSIUnitSetting reads the settings key and lives in platform, where the
// batch renderer reaches it without the report definitions' windows.
#include "platform/SIUnitSetting.h"
