#pragma once

#include "components/CalcEngine.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QtGlobal>

#include <functional>
#include <memory>

class OutputTarget;
class PrinterTarget;

// The values the whole program shares while it runs: the engine binding and
// the user's rights, the chosen subject, the printer, the auto-logout's counts
// and watching, the unit setting of the last report run, and the program's
// recorded end. The composition root (main, a tool, a test) owns one and
// hands it to the main window, which hands it on to what needs it; nothing
// else keeps these values. A test builds a fresh one, so no test sees what
// another left behind.
//
// The printers are only named here: they belong to the output layer, which
// creates them and sets them in (a shared_ptr deletes what it holds without
// knowing its type here).
struct ProgramState
{
    ProgramState();
    ~ProgramState();
    Q_DISABLE_COPY_MOVE(ProgramState)

    // The engine binding (modCalcObject).
    std::unique_ptr<CalcEngine> objCalc;
    bool blnCanRunReports = false;  // right 500
    bool blnCanEditReports = false; // right 501
    qint32 lngLogoutSeconds = 0;    // 0 = no auto-logout
    QString strNotifiedPatientID;   // the subject the engine was last told about; "" = none
    QString strCurrentPatientID;    // the subject the user chose

    // The printer state (modPrintGlobals): the start-up sets it, Print Setup
    // changes it, the report run and the preview print on it.
    //
    // The output target of all printing: the system printer chosen at start-up
    // or by Print Setup; empty while there is none.
    std::shared_ptr<OutputTarget> objPrint;
    // The device name of the printer current at start-up, to notice a change.
    QString strStartupPrinter;
    // The notice about a changed printer was shown (it is shown once a run).
    bool blnPrinterWarned = false;
    // Printing is possible: false when the printer could not be read at start-up.
    bool blnAppReady = false;
    // The system printer of this run, created on its first use (SystemPrinter).
    std::shared_ptr<PrinterTarget> systemPrinter;
    // Where the start-up takes objPrint from (StartupPrinter); empty for the
    // system printer. Tests put a recording target in, or none.
    std::function<std::shared_ptr<OutputTarget>()> printerSource;

    // The inactivity auto-logout (modTimerHook). The idle seconds are counted
    // by the main window's ActivityTimer; the countdown runs in frmAutoLogout.
    //
    // Seconds without a left click, double click or key; the watching resets it to 0.
    qint16 intIdleSeconds = 0;
    // The auto-logout countdown is showing (and stays set when it expires, until
    // the main window has closed).
    bool blnLogoutPending = false;
    // Seconds the countdown has run.
    qint16 intLogoutElapsed = 0;
    // The watching of the user's input (an ActivityFilter on the application
    // object) while it is installed; the state deletes it when it goes, so
    // that no watching outlives the counts it resets.
    QPointer<QObject> activityFilter;
    // The sound of the countdown's Beep; empty for the system beep. Tests
    // count the beeps through it.
    std::function<void()> beepSound;

    // The site reports in SI units: read afresh from the setting "SI Unit" by
    // every report run, which hands it on to the store and the layouts.
    bool blnSIUnits = false;

    // The program's end (ProgramExit): whether it was asked for, and its exit
    // code. The composition root, which runs the start-up before it enters
    // the event loop, reads them to tell that the start-up ended the program.
    bool exitRequested = false;
    int exitCode = 0;
};
