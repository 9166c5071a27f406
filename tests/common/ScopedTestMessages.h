#pragma once

#include "common/TestStrings.h"
#include "platform/RecordingMessageService.h"

// The test strings and a message service that records every box instead of
// showing it, for one test. The boxes go before the strings.
struct ScopedTestMessages
{
    ScopedTestStrings strings;
    RecordingMessageService boxes;
};
