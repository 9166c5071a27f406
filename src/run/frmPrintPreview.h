#pragma once

#include "components/ProgramState.h"
#include "components/ReportInfo.h"
#include "output/OutputTarget.h"
#include "output/PictureTarget.h"
#include "output/PreparedReport.h"
#include "rules/QCRuleSet.h"
#include "run/PictureBox.h"

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSizeF>

#include <memory>

// The print preview: the report's pages one at a time, graph pages first,
// then the table pages and, when the run checks QC rules, the violation
// pages, exactly as Print puts them on paper. It keeps the prepared report, not page
// images: each page is drawn on demand into the page picture picPage (with
// the layouts that print), and the view rectangle of that picture is copied
// into the visible view picGraph.
//
// Units. The view rectangle is in twips of the page. The page picture is
// drawn at 100 dots per inch of the view's logical pixels (1440 / 14.4) times
// the screen's scale, so one logical pixel of the view is 14.4 twips and one
// device pixel of the view is one pixel of the picture: the copy is one to
// one and the page looks as crisp as the screen allows. The scroll bars count
// logical view pixels, which is what the divisor 14.4 of UpdateScrollBars
// makes of the twips.
class frmPrintPreview final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(frmPrintPreview)

public:
    // Twips of the page per logical pixel of the view.
    static constexpr double TwipsPerViewPixel = 14.4;

    // The part of the page picture shown, in twips.
    struct ViewRect
    {
        qint32 Left = 0;
        qint32 Top = 0;
        qint32 Right = 0;
        qint32 Bottom = 0;
    };

    // The preview prints on the state's objPrint; state outlives the window.
    explicit frmPrintPreview(ProgramState& state, QWidget* parent = nullptr);
    ~frmPrintPreview() override;

    // The run's entry: prepares the report for printer (the program's
    // objPrint) from the window's own copy of info, its charts checked
    // against rules (none: no check and no violation pages). The table's and
    // the violation list's pages are laid out with the printer's metrics, so
    // that Print from here prints them as shown. False, with nothing to show,
    // when no graph series could be prepared; a table that cannot be prepared
    // leaves the graph pages to show. Store errors reach the caller.
    bool SetGraphData(const std::shared_ptr<OutputTarget>& printer, const ReportInfo& info, bool siUnits,
                      const QCRuleSet& rules = QCRuleSet());

    // Draws page (1-based, graph pages first) on the page picture and shows
    // it. False, with nothing changed, for a page the report does not have.
    bool ShowPage(qint32 page);
    // Copies the view rectangle of the page picture into the view.
    void CopyPageToView();
    // The scroll bars' ranges from the page picture and the view rectangle.
    void UpdateScrollBars();
    // Close the data sets of the graph list or the table and empty them.
    void ReleaseGraphData();
    void ReleaseTableData();

    void cmdNextPage_Click();
    void cmdPrevPage_Click();
    void cmdPrint_Click();
    void cmdPrintSetup_Click();
    void cmdCancel_Click();
    void scrHScroll_Change();
    void scrVScroll_Change();

    // What the window holds, for those who check it.
    const PreparedReport& Report() const { return m_report; }
    ViewRect ViewRectangle() const { return m_view; }
    // The page picture (nullptr before the window was first shown).
    PictureTarget* PagePicture() const { return m_picPage.get(); }

    // The definition's name as the main window's list shows it: the PDF
    // printer proposes a file name with it.
    QString m_strReportName;

    QLabel* Label1 = nullptr;
    QLineEdit* txtPage = nullptr;
    QPushButton* cmdPrevPage = nullptr;
    QPushButton* cmdNextPage = nullptr;
    QPushButton* cmdZoom = nullptr;
    QPushButton* cmdPrintSetup = nullptr;
    QPushButton* cmdPrint = nullptr;
    QPushButton* cmdCancel = nullptr;
    PictureBox* picGraph = nullptr;
    QScrollBar* scrHScroll = nullptr;
    QScrollBar* scrVScroll = nullptr;

public slots:
    // Unloading releases what the window holds, however it is closed.
    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void Form_Activate();
    // The view was made anew (new size or screen scale).
    void picGraph_Resize();
    // The page size of the printer given to SetGraphData, in twips; a Letter
    // page when there was none.
    QSizeF PageSizeTwips() const;
    // The page picture at the view's current resolution, made when missing
    // or drawn for another screen scale.
    PictureTarget& PagePictureForView();
    // Twips of the view's logical pixels.
    static qint32 ViewTwips(int pixels);

    ProgramState& m_state;
    PreparedReport m_report;
    std::shared_ptr<OutputTarget> m_printer;
    std::unique_ptr<PictureTarget> m_picPage;
    ViewRect m_view;
    qint32 m_pageDrawn = 0; // the page on the page picture; 0 = none
    bool m_activated = false;
};
