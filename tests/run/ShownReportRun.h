#pragma once

#include "ReportRunFixture.h"

#include "common/ModalDriver.h"

// The report run's window shown, with a driver that answers the modal
// windows the run opens (the preview, message boxes). The driver goes before
// the window.
struct ShownReportRun : ReportRunFixture
{
    ShownReportRun() { window.show(); }

    ReportRunPanel& run() { return *window.run; }

    ModalDriver watch;
};
