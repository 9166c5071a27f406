#pragma once

#include "MainWindowFixture.h"

#include "components/PatientQuery.h"
#include "components/QCReportStore.h"
#include "platform/StringServer.h"

#include <QTest>

#include <memory>

// The real main window on the suite's components, as the window tests that
// run it on a real database start and leave it.

// Runs the start-up of a window over state and shows the window; nullptr when
// the start-up showed a message or ended the program.
inline std::unique_ptr<frmMain> StartSuiteWindow(ProgramState& state, const RecordingMessageService& boxes)
{
    auto window = std::make_unique<frmMain>(state);
    window->Form_Load();
    if (boxes.count() != 0 || state.exitRequested)
        return nullptr;
    window->show();
    if (!QTest::qWaitForWindowExposed(window.get()))
        return nullptr;
    return window;
}

// Forgets the suite's components after a test.
inline void ForgetSuiteComponents()
{
    for (const QString& classId :
         {QCReportStore::ClassId, CalcEngine::ClassId, PatientQuery::ClassId, StringServer::ClassId})
        ComponentFactory::unregisterClass(classId);
    ResetResourceServer();
}
