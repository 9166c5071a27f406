#pragma once

#include <QFrame>
#include <QLabel>
#include <QWidget>

// The window shown while the main window starts: the product picture and
// name, the program's version and a progress line. A key press or a click on
// it closes it early.
class frmSplash final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(frmSplash)

public:
    explicit frmSplash(QWidget* parent = nullptr);

    // Fills the version and product lines.
    void Form_Load();
    // Shows the window and has it painted before returning: what comes next
    // may keep the program busy without letting events run (the start-up's
    // first questions to the database).
    void ShowNow();
    // Closes the window (the start-up may go on writing to its progress line).
    void Unload();

    // "Version major.minor.revision" of this build.
    static QString VersionText();

    QFrame* Frame1 = nullptr;
    QLabel* imgLogo = nullptr;
    QLabel* lblProductName = nullptr;
    QLabel* lblVersion = nullptr;
    QLabel* lblStatus = nullptr;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
};
