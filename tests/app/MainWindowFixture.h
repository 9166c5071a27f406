#pragma once

#include "app/StartupPrinter.h"
#include "app/frmMain.h"
#include "app/modTimerHook.h"
#include "common/FakeCalcEngine.h"
#include "common/FakeCatalogue.h"
#include "common/FakeReportStore.h"
#include "common/ScopedRegistryFile.h"
#include "common/TestStrings.h"
#include "components/modCalcObject.h"
#include "output/RecordingTarget.h"
#include "output/modPrintGlobals.h"
#include "platform/Clock.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"

#include <QDir>
#include <QFile>
#include <QFileDevice>
#include <QTest>

#include <memory>

// The main window over a fresh program state, a scripted engine and store,
// the fake catalogue, the test strings, a printer of its own and a registry
// key whose "Executable Path" holds a database tool that writes its arguments
// to toolLog().
struct MainWindowFixture
{
    MainWindowFixture()
    {
        // The start-up must clear these itself.
        state.blnPrinterWarned = true;
        state.blnLogoutPending = true;
        Clock::pin(QDateTime(QDate(2024, 6, 15), QTime(9, 30)));
        FakeCatalogue::install(*store);
        state.printerSource = [this] { return printer; };
        printer->setDeviceName(QStringLiteral("Test Printer"));

        QDir(registry.folder()).mkpath(QStringLiteral("bin"));
        writeTool(toolFolder(), QStringLiteral("echo \"$@\" >> \"%1\"\n").arg(toolLog()));
        registry.setValue(QStringLiteral("Executable Path"), toolFolder());
        registry.setValue(QStringLiteral("SI Unit"), QStringLiteral("0"));
        window = std::make_unique<frmMain>(state);
    }

    ~MainWindowFixture()
    {
        window.reset();
        Clock::pin(QDateTime());
    }

    // A database tool named as the program expects it in folder, running body.
    static void writeTool(const QString& folder, const QString& body)
    {
        QFile tool(QDir(folder).filePath(QStringLiteral("NorrixDBQuery")));
        if (!tool.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return;
        tool.write("#!/bin/sh\n");
        tool.write(body.toUtf8());
        tool.close();
        tool.setPermissions(tool.permissions() | QFileDevice::ExeOwner | QFileDevice::ExeUser);
    }

    QString toolFolder() const { return registry.folder() + QStringLiteral("/bin"); }
    QString toolLog() const { return registry.folder() + QStringLiteral("/tool.log"); }
    QString toolRuns() const
    {
        QFile log(toolLog());
        return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
    }

    ReportTabsPanel& tabs() { return *window->ReportTabs(); }
    template <class W> W* control(const QString& name) { return window->findChild<W*>(name); }

    ScopedTestStrings strings;
    RecordingMessageService boxes;
    ScopedRegistryFile registry;
    std::shared_ptr<FakeCalcEngine::Script> engine = std::make_shared<FakeCalcEngine::Script>();
    ScopedComponentRegistration engineRegistration{CalcEngine::ClassId, FakeCalcEngine::creator(engine)};
    std::shared_ptr<FakeReportStore::Script> store = std::make_shared<FakeReportStore::Script>();
    ScopedComponentRegistration storeRegistration{QCReportStore::ClassId, FakeReportStore::creator(store)};
    std::shared_ptr<RecordingTarget> printer = std::make_shared<RecordingTarget>();
    ProgramState state;
    std::unique_ptr<frmMain> window;
};
