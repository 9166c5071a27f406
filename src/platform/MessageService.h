#pragma once

#include <QString>

// Message-box styles and answers, by the numbers the program has always used.
namespace MsgStyle
{
constexpr int OkOnly = 0;
constexpr int OkCancel = 1;
constexpr int YesNo = 4;
constexpr int Critical = 16;
constexpr int Question = 32;
constexpr int Exclamation = 48;
constexpr int Information = 64;
} // namespace MsgStyle

namespace MsgAnswer
{
constexpr int Ok = 1;
constexpr int Cancel = 2;
constexpr int Yes = 6;
constexpr int No = 7;
} // namespace MsgAnswer

// Shows a message box and returns the button pressed. Every box of the program
// goes through the current service: the window toolkit's boxes when the
// program runs, a recorder in tests.
class MessageService
{
public:
    virtual ~MessageService() = default;

    // An empty title means the application's default title. A detail that is
    // not empty goes with the box as its details part: what the user may open
    // to learn more (the reason behind the text), e.g. for a support call.
    virtual int show(const QString& text, int style, const QString& title, const QString& detail) = 0;

    static MessageService& current();
    // Installs a service; nullptr puts back the default one. The caller keeps ownership.
    static void install(MessageService* service);
    static MessageService* installed();
    // The default service: a box of the window toolkit (installed by the widgets layer).
    static void setDefault(MessageService* service);
};

// Shorthand used by every handler.
int MsgBox(const QString& text, int style = MsgStyle::OkOnly, const QString& title = QString(),
           const QString& detail = QString());
