#include "run/ReportRunPanel.h"

#include "output/modPrintGlobals.h"
#include "platform/MessageService.h"
#include "platform/QCRulesSetting.h"
#include "platform/RuntimeError.h"
#include "platform/SIUnitSetting.h"
#include "platform/modResource.h"
#include "reports/SelectedVariable.h"
#include "run/PrintJob.h"
#include "run/WaitCursor.h"
#include "widgets/ShowPrintSetup.h"

#include <QHBoxLayout>

#include <memory>

ReportRunPanel::ReportRunPanel(MainWindowHost& host, SubjectSearchPanel& search, DateRangePanel& dates,
                               ReportTabsPanel& tabs, QWidget* parent)
    : QWidget(parent)
    , m_host(host)
    , m_search(search)
    , m_dates(dates)
    , m_tabs(tabs)
{
    setObjectName(QStringLiteral("ReportRunPanel"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    cmdPrintSetup = new QPushButton(QStringLiteral("P&rint Setup"), this);
    cmdPrintSetup->setObjectName(QStringLiteral("cmdPrintSetup"));
    cmdPreview = new QPushButton(QStringLiteral("Pre&view"), this);
    cmdPreview->setObjectName(QStringLiteral("cmdPreview"));
    cmdPrint = new QPushButton(QStringLiteral("&Print"), this);
    cmdPrint->setObjectName(QStringLiteral("cmdPrint"));
    for (QPushButton* button : {cmdPrintSetup, cmdPreview, cmdPrint})
    {
        button->setAutoDefault(false);
        layout->addWidget(button);
    }
    connect(cmdPrintSetup, &QPushButton::clicked, this, [this] { cmdPrintSetup_Click(); });
    connect(cmdPreview, &QPushButton::clicked, this, [this] { cmdPreview_Click(); });
    connect(cmdPrint, &QPushButton::clicked, this, [this] { cmdPrint_Click(); });
}

void ReportRunPanel::cmdPreview_Click()
{
    if (!m_host.State().blnAppReady)
    {
        MsgBox(GetResourceText(4118), MsgStyle::OkOnly, m_host.MsgTitle());
        return;
    }
    // The window and the request belong to this run and go with it, on
    // every way out.
    std::unique_ptr<frmPrintPreview> preview;
    try
    {
        const std::optional<RunRequest> request = ReadRunRequest();
        if (!request)
            return;
        WaitCursor wait;
        preview = std::make_unique<frmPrintPreview>(m_host.State(), window());
        m_preview = preview.get();
        preview->m_strReportName = ReportName(request->tab);
        // The preview shows its own hourglass while it prepares the pages.
        wait.restore();
        if (preview->SetGraphData(m_host.State().objPrint, request->info, m_host.State().blnSIUnits, request->rules))
            preview->exec();
    }
    catch (const RuntimeError& error)
    {
        // The preparation lets the store's errors through without a word;
        // the user pressed Preview and would otherwise see nothing happen.
        preview.reset();
        MsgBox(error.description(), MsgStyle::Critical, m_host.MsgTitle());
    }
}

void ReportRunPanel::cmdPrint_Click()
{
    if (!m_host.State().blnAppReady)
    {
        MsgBox(GetResourceText(4117), MsgStyle::OkOnly, m_host.MsgTitle());
        return;
    }
    // The printer of this job, held until it has ended.
    const std::shared_ptr<OutputTarget> printer = m_host.State().objPrint;
    if (!printer)
    {
        MsgBox(GetResourceText(4064), MsgStyle::Exclamation, m_host.MsgTitle());
        cmdPrintSetup->setFocus();
        return;
    }
    try
    {
        const std::optional<RunRequest> request = ReadRunRequest();
        if (!request)
            return;
        // The batch renderer's road: graph series, then table data (a failure
        // of either stops here, unprinted and without a word, as each says
        // what it has to say itself), the table set up around the graph
        // pages, the table pages numbered on, the violation pages, EndDoc.
        PrintReportJob(*printer, request->info, ReportName(request->tab), m_host.State().blnSIUnits, request->rules);
    }
    catch (const RuntimeError& error)
    {
        // A store error comes before the first page, a printer error ends
        // the job where it happened; either way the user learns why nothing
        // or not everything was printed.
        MsgBox(error.description(), MsgStyle::Critical, m_host.MsgTitle());
    }
}

std::optional<ReportRunPanel::RunRequest> ReportRunPanel::ReadRunRequest()
{
    RunRequest request;
    request.tab = qint16(m_host.CurrentTab());
    if (!ValidateReportRequest(request.tab) || !ReadQCRules(request.rules))
        return std::nullopt;
    m_host.State().blnSIUnits = ReadSIUnitSetting();
    m_tabs.BuildReportInfo(request.tab, request.info);
    return request;
}

void ReportRunPanel::cmdPrintSetup_Click()
{
    if (!m_host.State().blnAppReady)
    {
        MsgBox(GetResourceText(4117), MsgStyle::OkOnly, m_host.MsgTitle());
        return;
    }
    try
    {
        if (std::shared_ptr<PrinterTarget> chosen = ShowPrintSetup(m_host.State(), window()))
            m_host.State().objPrint = std::move(chosen);
    }
    catch (const RuntimeError& error)
    {
        // The printer could not be read after the dialog; the printer in use
        // stays, and the user learns why the choice did not take.
        MsgBox(error.description(), MsgStyle::Critical, m_host.MsgTitle());
    }
}

bool ReportRunPanel::ValidateReportRequest(qint16 tab)
{
    const QString title = m_host.MsgTitle();
    if (!IsPatientSelected())
    {
        MsgBox(GetResourceText(4075), MsgStyle::Exclamation, title);
        m_search.txtPatient->setFocus();
        return false;
    }
    if (!m_dates.ValidateDateRange())
    {
        MsgBox(GetResourceText(4076), MsgStyle::Exclamation, title);
        m_dates.mskDate[0]->setFocus();
        return false;
    }
    if (m_tabs.CountSelectedVariables(tab) <= 0)
    {
        MsgBox(GetResourceText(4077), MsgStyle::Exclamation, title);
        m_tabs.cboVariable.at(std::size_t(tab))->setFocus();
        return false;
    }

    // Both counts in one pass, then the graph's limit before the table's.
    const auto [inGraph, inTable] = m_tabs.CountShownVariables(tab);
    const QString limit = QStringLiteral(": ") + QString::number(kMaxVariables);
    if (inGraph > kMaxVariables)
    {
        MsgBox(GetResourceText(4078) + limit, MsgStyle::Exclamation, title);
        return false;
    }
    if (inTable > kMaxVariables)
    {
        MsgBox(GetResourceText(4079) + limit, MsgStyle::Exclamation, title);
        return false;
    }
    return true;
}

bool ReportRunPanel::IsPatientSelected() const
{
    return !m_host.SelectedPatientID().isEmpty();
}

bool ReportRunPanel::ReadQCRules(QCRuleSet& rules) const
{
    QString unknown;
    if (QCRuleSet::parse(ReadQCRulesSetting(), rules, unknown))
        return true;
    MsgBox(GetResourceText(4137) + QStringLiteral(": \"") + unknown + QStringLiteral("\".\n") + GetResourceText(4138) +
               QStringLiteral(": ") + QCRuleSet::knownNames() + QLatin1Char('.'),
           MsgStyle::Exclamation, m_host.MsgTitle());
    return false;
}

QString ReportRunPanel::ReportName(qint16 tab) const
{
    return m_tabs.cboReports.at(std::size_t(tab))->currentText();
}
