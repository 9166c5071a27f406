#pragma once

#include "common/FakeReportStore.h"
#include "common/TestStrings.h"
#include "components/QCReportStore.h"
#include "platform/Clock.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"

#include <QDateTime>

#include <memory>

// What the report printing tests print over: the clock pinned to July 1,
// 2024, 9:00, the test strings, message boxes recorded, and every report
// store the printing makes answering from one script. The clock runs again
// when the object goes.
struct ScriptedStorePrinting
{
    ScriptedStorePrinting() { Clock::pin(QDateTime(QDate(2024, 7, 1), QTime(9, 0))); }
    ~ScriptedStorePrinting() { Clock::pin(QDateTime()); }

    ScriptedStorePrinting(const ScriptedStorePrinting&) = delete;
    ScriptedStorePrinting& operator=(const ScriptedStorePrinting&) = delete;

    ScopedTestStrings strings;
    RecordingMessageService boxes;
    std::shared_ptr<FakeReportStore::Script> store = std::make_shared<FakeReportStore::Script>();
    ScopedComponentRegistration registration{QCReportStore::ClassId, FakeReportStore::creator(store)};
};
