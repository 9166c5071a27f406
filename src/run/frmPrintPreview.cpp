#include "run/frmPrintPreview.h"

#include "output/modPrintGlobals.h"
#include "output/modPrintReport.h"
#include "platform/MessageService.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "run/PrintJob.h"
#include "run/WaitCursor.h"
#include "widgets/EventGuard.h"
#include "widgets/FitToScreen.h"

#include <QFont>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QPageSize>
#include <QShowEvent>
#include <QVBoxLayout>

#include <limits>

namespace
{
constexpr double TwipsPerInch = 1440;
constexpr double TwipsPerPoint = 20;

// A 16-bit whole number, half to even; beyond its range a run-time error 6.
qint16 ToInteger16(double value)
{
    const double rounded = RoundHalfEven(value);
    if (rounded < std::numeric_limits<qint16>::min() || rounded > std::numeric_limits<qint16>::max())
        throw RuntimeError(ErrorNumber::Overflow, QStringLiteral("UpdateScrollBars"), QStringLiteral("Overflow"));
    return qint16(rounded);
}

// Bar range from 0 to maximum; a page that fits leaves the bar without range.
// Steps of a tenth and a fifth of the range, at least one pixel, so the
// arrows of a short range still move.
void SetBarRange(QScrollBar& bar, qint16 maximum)
{
    bar.setRange(0, std::max<int>(0, maximum));
    if (maximum > 0)
    {
        bar.setSingleStep(std::max<int>(1, ToInteger16(maximum / 10.0)));
        bar.setPageStep(std::max<int>(1, ToInteger16(maximum / 5.0)));
    }
}
} // namespace

frmPrintPreview::frmPrintPreview(ProgramState& state, QWidget* parent)
    : QDialog(parent)
    , m_state(state)
{
    setObjectName(QStringLiteral("frmPrintPreview"));
    setModal(true);
    setWindowTitle(GetResourceText(4083));

    Label1 = new QLabel(GetResourceText(4084) + QLatin1Char(':'), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    txtPage = new QLineEdit(this);
    txtPage->setObjectName(QStringLiteral("txtPage"));
    txtPage->setValidator(new QIntValidator(0, 99999, txtPage));
    txtPage->setMaximumWidth(60);
    Label1->setBuddy(txtPage);
    cmdPrevPage = new QPushButton(QStringLiteral("<"), this);
    cmdPrevPage->setObjectName(QStringLiteral("cmdPrevPage"));
    cmdNextPage = new QPushButton(QStringLiteral(">"), this);
    cmdNextPage->setObjectName(QStringLiteral("cmdNextPage"));
    cmdZoom = new QPushButton(GetResourceText(4085), this);
    cmdZoom->setObjectName(QStringLiteral("cmdZoom"));
    cmdPrintSetup = new QPushButton(GetResourceText(4051), this);
    cmdPrintSetup->setObjectName(QStringLiteral("cmdPrintSetup"));
    cmdPrint = new QPushButton(GetResourceText(4045), this);
    cmdPrint->setObjectName(QStringLiteral("cmdPrint"));
    cmdCancel = new QPushButton(GetResourceText(4008), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));

    picGraph = new PictureBox(this);
    picGraph->setObjectName(QStringLiteral("picGraph"));
    picGraph->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    scrHScroll = new QScrollBar(Qt::Horizontal, this);
    scrHScroll->setObjectName(QStringLiteral("scrHScroll"));
    scrVScroll = new QScrollBar(Qt::Vertical, this);
    scrVScroll->setObjectName(QStringLiteral("scrVScroll"));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(Label1);
    buttons->addWidget(txtPage);
    buttons->addWidget(cmdPrevPage);
    buttons->addWidget(cmdNextPage);
    buttons->addWidget(cmdZoom);
    buttons->addStretch(1);
    buttons->addWidget(cmdPrintSetup);
    buttons->addWidget(cmdPrint);
    buttons->addWidget(cmdCancel);
    for (QPushButton* button : {cmdPrevPage, cmdNextPage, cmdZoom, cmdPrintSetup, cmdPrint, cmdCancel})
        button->setAutoDefault(false);

    // The scroll bars run along the view's right and bottom edges.
    auto* view = new QGridLayout;
    view->setSpacing(0);
    view->addWidget(picGraph, 0, 0);
    view->addWidget(scrVScroll, 0, 1);
    view->addWidget(scrHScroll, 1, 0);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(buttons);
    layout->addLayout(view, 1);

    // No run-time error leaves a handler: the window's handlers are guarded.
    const auto on = [this](auto handler) {
        return [this, handler] { RunGuarded([&] { (this->*handler)(); }, windowTitle()); };
    };
    connect(cmdNextPage, &QPushButton::clicked, this, on(&frmPrintPreview::cmdNextPage_Click));
    connect(cmdPrevPage, &QPushButton::clicked, this, on(&frmPrintPreview::cmdPrevPage_Click));
    connect(cmdPrint, &QPushButton::clicked, this, on(&frmPrintPreview::cmdPrint_Click));
    connect(cmdPrintSetup, &QPushButton::clicked, this, on(&frmPrintPreview::cmdPrintSetup_Click));
    connect(cmdCancel, &QPushButton::clicked, this, on(&frmPrintPreview::cmdCancel_Click));
    // cmdZoom is shown and captioned but has no action: the view stays at
    // the page's own size, moved only by the scroll bars.
    connect(scrHScroll, &QScrollBar::valueChanged, this, on(&frmPrintPreview::scrHScroll_Change));
    connect(scrVScroll, &QScrollBar::valueChanged, this, on(&frmPrintPreview::scrVScroll_Change));
    connect(picGraph, &PictureBox::Resized, this, on(&frmPrintPreview::picGraph_Resize));

    // A letter page is 850 view pixels wide: the window shows its width
    // where the screen has room for it; the scroll bars reach the rest.
    FitToScreen(*this, QSize(920, 760));
}

frmPrintPreview::~frmPrintPreview()
{
    ReleaseGraphData();
    ReleaseTableData();
}

bool frmPrintPreview::SetGraphData(const std::shared_ptr<OutputTarget>& printer, const ReportInfo& info, bool siUnits,
                                   const QCRuleSet& rules)
{
    WaitCursor wait;
    m_printer = printer;
    m_pageDrawn = 0;
    // Without a printer the page picture is the only page there is to lay
    // the table out on.
    OutputTarget& layout = m_printer ? *m_printer : static_cast<OutputTarget&>(PagePictureForView());
    return PrepareReportPreview(layout, info, siUnits, m_report, rules);
}

void frmPrintPreview::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!m_activated && !event->spontaneous())
    {
        m_activated = true;
        RunGuarded([this] { Form_Activate(); }, windowTitle());
    }
}

void frmPrintPreview::Form_Activate()
{
    picGraph->SetForeColor(QColor(0, 0, 0));
    picGraph->SetBackColor(QColor(255, 255, 255));
    picGraph->setFont(QFont(QStringLiteral("Arial")));
    picGraph->Cls();

    PagePictureForView();
    m_view = {0, 0, ViewTwips(picGraph->width()), ViewTwips(picGraph->height())};
    UpdateScrollBars();
    if (ShowPage(1))
        txtPage->setText(QStringLiteral("1"));
}

bool frmPrintPreview::ShowPage(qint32 page)
{
    WaitCursor wait;
    if (!DrawReportPage(PagePictureForView(), m_report, page))
        return false;
    m_pageDrawn = page;
    picGraph->Cls();
    CopyPageToView();
    return true;
}

void frmPrintPreview::CopyPageToView()
{
    if (!m_picPage)
        return;
    // The rectangle has the view's size, and the picture the view's
    // resolution: its pixels land one to one on the view's.
    const double pixelsPerTwip = m_picPage->dotsPerInch() / TwipsPerInch;
    const auto pixels = [pixelsPerTwip](qint32 twips) { return RoundToInt32(twips * pixelsPerTwip); };
    const QRect source(QPoint(pixels(m_view.Left), pixels(m_view.Top)),
                       QSize(pixels(m_view.Right - m_view.Left), pixels(m_view.Bottom - m_view.Top)));
    picGraph->PaintPicture(m_picPage->image(), source);
    picGraph->Refresh();
}

void frmPrintPreview::UpdateScrollBars()
{
    const QSizeF page = PageSizeTwips();
    const qint16 vertical = ToInteger16((page.height() - (m_view.Bottom - m_view.Top)) / TwipsPerViewPixel);
    const qint16 horizontal = ToInteger16((page.width() - (m_view.Right - m_view.Left)) / TwipsPerViewPixel);
    SetBarRange(*scrVScroll, vertical);
    SetBarRange(*scrHScroll, horizontal);
}

void frmPrintPreview::scrHScroll_Change()
{
    const qint32 width = m_view.Right - m_view.Left;
    m_view.Left = ViewTwips(scrHScroll->value());
    m_view.Right = m_view.Left + width;
    picGraph->Cls();
    CopyPageToView();
}

void frmPrintPreview::scrVScroll_Change()
{
    const qint32 height = m_view.Bottom - m_view.Top;
    m_view.Top = ViewTwips(scrVScroll->value());
    m_view.Bottom = m_view.Top + height;
    picGraph->Cls();
    CopyPageToView();
}

void frmPrintPreview::picGraph_Resize()
{
    if (!m_activated)
        return;
    // On a screen of another scale the page picture is made anew at the
    // screen's resolution and the page drawn on it again.
    const qint32 page = m_pageDrawn;
    PictureTarget& picture = PagePictureForView();
    if (page > 0 && m_pageDrawn == 0 && DrawReportPage(picture, m_report, page))
        m_pageDrawn = page;
    m_view.Right = m_view.Left + ViewTwips(picGraph->width());
    m_view.Bottom = m_view.Top + ViewTwips(picGraph->height());
    UpdateScrollBars();
    picGraph->Cls();
    CopyPageToView();
}

void frmPrintPreview::cmdNextPage_Click()
{
    const qint32 page = txtPage->text().toInt() + 1;
    if (ShowPage(page))
        txtPage->setText(QString::number(page));
}

void frmPrintPreview::cmdPrevPage_Click()
{
    // The number goes back even when the page cannot be shown, while Next
    // moves it only to a page it has shown: the difference is intended.
    const qint32 page = txtPage->text().toInt();
    if (page == 1)
        return;
    ShowPage(page - 1);
    txtPage->setText(QString::number(page - 1));
}

void frmPrintPreview::cmdPrint_Click()
{
    if (!m_state.objPrint)
    {
        MsgBox(GetResourceText(4086), MsgStyle::Exclamation, GetResourceText(4087));
        return;
    }
    try
    {
        // The pages as prepared and laid out for this preview: no new
        // preparation, so paper and screen show the same report.
        PrintPreviewedReportJob(*m_state.objPrint, m_report, m_strReportName);
    }
    catch (const RuntimeError& error)
    {
        // The printer failed during the job. The user pressed Print and
        // would otherwise see nothing happen, so the reason is shown.
        MsgBox(error.description(), MsgStyle::Critical, GetResourceText(4087));
    }
}

void frmPrintPreview::cmdPrintSetup_Click()
{
    // Deliberately nothing: the printer is chosen on the main window only,
    // before the report is prepared for it.
}

void frmPrintPreview::cmdCancel_Click()
{
    reject();
}

void frmPrintPreview::done(int result)
{
    ReleaseGraphData();
    ReleaseTableData();
    QDialog::done(result);
}

void frmPrintPreview::ReleaseGraphData()
{
    ReleaseReportGraphs(m_report);
}

void frmPrintPreview::ReleaseTableData()
{
    ReleaseReportTable(m_report);
}

QSizeF frmPrintPreview::PageSizeTwips() const
{
    if (m_printer)
        return QSizeF(m_printer->ScaleWidth(), m_printer->ScaleHeight());
    return QPageSize(QPageSize::Letter).size(QPageSize::Point) * TwipsPerPoint;
}

PictureTarget& frmPrintPreview::PagePictureForView()
{
    const int dotsPerInch = RoundToInt32(TwipsPerInch / TwipsPerViewPixel * picGraph->devicePixelRatioF());
    if (!m_picPage || m_picPage->dotsPerInch() != dotsPerInch)
    {
        const QSizeF page = PageSizeTwips();
        m_picPage = std::make_unique<PictureTarget>(page.width(), page.height(), dotsPerInch);
        m_pageDrawn = 0;
    }
    return *m_picPage;
}

qint32 frmPrintPreview::ViewTwips(int pixels)
{
    return RoundToInt32(pixels * TwipsPerViewPixel);
}
