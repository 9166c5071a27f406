#pragma once

#include <QPushButton>
#include <QWidget>

// Print Setup, Preview and Print of the main window.
class ReportRunPanel final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ReportRunPanel)

public:
    explicit ReportRunPanel(QWidget* parent = nullptr);

    QPushButton* cmdPrintSetup = nullptr;
    QPushButton* cmdPreview = nullptr;
    QPushButton* cmdPrint = nullptr;
};
