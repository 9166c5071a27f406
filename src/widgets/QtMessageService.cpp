#include "widgets/QtMessageService.h"

#include <QApplication>
#include <QMessageBox>

#include <array>
#include <utility>

namespace
{
using Button = std::pair<QMessageBox::StandardButton, int>;

constexpr Button kOk{QMessageBox::Ok, MsgAnswer::Ok};
constexpr Button kCancel{QMessageBox::Cancel, MsgAnswer::Cancel};
constexpr Button kAbort{QMessageBox::Abort, 3};
constexpr Button kRetry{QMessageBox::Retry, 4};
constexpr Button kIgnore{QMessageBox::Ignore, 5};
constexpr Button kYes{QMessageBox::Yes, MsgAnswer::Yes};
constexpr Button kNo{QMessageBox::No, MsgAnswer::No};

// The buttons of each button style, in their order on the box; the first is the default.
const std::array<QList<Button>, 6> kButtonSets{{
    {kOk},
    {kOk, kCancel},
    {kAbort, kRetry, kIgnore},
    {kYes, kNo, kCancel},
    {kYes, kNo},
    {kRetry, kCancel},
}};

QMessageBox::Icon iconOf(int style)
{
    switch (style & 0x70)
    {
    case MsgStyle::Critical:
        return QMessageBox::Critical;
    case MsgStyle::Question:
        return QMessageBox::Question;
    case MsgStyle::Exclamation:
        return QMessageBox::Warning;
    case MsgStyle::Information:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}
} // namespace

int QtMessageService::show(const QString& text, int style, const QString& title, const QString& detail)
{
    QMessageBox box(QApplication::activeWindow());
    box.setWindowTitle(title.isEmpty() ? QGuiApplication::applicationDisplayName() : title);
    box.setTextFormat(Qt::PlainText); // texts are never markup
    box.setText(text);
    box.setIcon(iconOf(style));
    // Shown on request only: the text stays the one the user knows.
    if (!detail.isEmpty())
        box.setDetailedText(detail);

    const int buttonStyle = style & 7;
    const QList<Button>& buttons = kButtonSets.at(buttonStyle < int(kButtonSets.size()) ? buttonStyle : 0);
    QMessageBox::StandardButtons standardButtons;
    for (const Button& button : buttons)
        standardButtons |= button.first;
    box.setStandardButtons(standardButtons);
    box.setDefaultButton(buttons.first().first);

    box.exec();
    const QMessageBox::StandardButton pressed = box.standardButton(box.clickedButton());
    for (const Button& button : buttons)
    {
        if (button.first == pressed)
            return button.second;
    }
    // Closed without a button: the last button is the one that backs out.
    return buttons.last().second;
}

void QtMessageService::installAsDefault()
{
    static QtMessageService service;
    MessageService::setDefault(&service);
}
