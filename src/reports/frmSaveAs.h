#pragma once

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QString>

// "Save Report": asks for the name of a new definition. Save takes a name that
// no saved definition bears yet (the store compares them, and nothing is
// trimmed here) and closes the window with it in m_strName; Cancel closes it
// with m_strName empty. The name takes at most the store's
// MaxNameLength characters and no control characters (left out of what
// is typed or pasted).
class frmSaveAs final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(frmSaveAs)

public:
    // msgTitle: the title of the main window's message boxes, for errors of the store.
    explicit frmSaveAs(const QString& msgTitle, QWidget* parent = nullptr);

    void txtName_Change();
    void cmdSave_Click();
    void cmdCancel_Click();

    QLabel* Label1 = nullptr;
    QLineEdit* txtName = nullptr;
    QPushButton* cmdSave = nullptr;
    QPushButton* cmdCancel = nullptr;

    // The accepted name; empty when the window was cancelled.
    QString m_strName;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Form_Load();

    QString m_msgTitle;
};
