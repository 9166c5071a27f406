#pragma once

#include <QDate>
#include <QLineEdit>
#include <QString>

// A date entry box with the classic masked-edit properties: the text as typed,
// the display format ("mm/dd/yyyy": month first, two-digit month and day,
// four-digit year) and the prompt character that marks an empty position.
//
// Typing fills the template "__/__/____" position by position: a digit takes
// the next open position (the slashes are stepped over), a "/" after a single
// digit of the month or the day completes it with a leading zero ("3/7/2024"
// gives "03/07/2024"), Backspace and Delete open a position again without
// moving the others. A box whose template is all prompts holds "", so an empty
// box reads as empty. Pasted or dropped text is typed the same way.
//
// textChanged is the box's change event: it fires for the user's typing and
// for SetText alike.
class MaskEdBox : public QLineEdit
{
    Q_OBJECT

public:
    explicit MaskEdBox(QWidget* parent = nullptr);

    // What the box holds: "", a template with the user's digits and prompts
    // ("03/0_/____"), or the text last set with SetText.
    QString Text() const { return text(); }
    void SetText(const QString& value) { setText(value); }

    const QString& Format() const { return m_format; }
    void SetFormat(const QString& format) { m_format = format; }

    QChar PromptChar() const { return m_promptChar; }

    // A date written with the box's format: "m"/"mm" month, "d"/"dd" day,
    // "yy"/"yyyy" year; any other character is copied.
    QString FormatDate(const QDate& date) const;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    // The current text as a full template: "" and texts such as "3/7/2024"
    // are brought into the "__/__/____" form first.
    QString templateText() const;
    // A cursor position of the text as a position of its template (the end of
    // a text set in another form, "" included, is the template's first open
    // position).
    int templatePosition(int position) const;
    // Types text at the cursor, replacing the selection, as a user would key it in.
    void typeText(const QString& typed);
    // Opens the selected positions, or the one before (Backspace) or at (Delete) the cursor.
    void erase(bool backwards);
    // Shows a template ("" when it holds no digit) with the cursor at position.
    void showTemplate(const QString& mask, int position);
    // Position of the first prompt, or the template's length when it is full.
    int firstOpenPosition() const;
    // Text the toolkit's own editing put in (context menu, drag and drop, undo)
    // is typed again into an empty template.
    void retypeEdited(const QString& edited);

    QString m_format = QStringLiteral("mm/dd/yyyy");
    QChar m_promptChar = QLatin1Char('_');
};
