#pragma once

#include <QDate>
#include <QLineEdit>
#include <QString>

// A date entry box with the classic masked-edit properties: the text as typed,
// the display format ("mm/dd/yyyy": month first, two-digit month and day,
// four-digit year) and the prompt character that marks an empty position.
class MaskEdBox : public QLineEdit
{
    Q_OBJECT

public:
    explicit MaskEdBox(QWidget* parent = nullptr);

    QString Text() const { return text(); }
    void SetText(const QString& value) { setText(value); }

    const QString& Format() const { return m_format; }
    void SetFormat(const QString& format) { m_format = format; }

    QChar PromptChar() const { return m_promptChar; }

    // A date written with the box's format: "m"/"mm" month, "d"/"dd" day,
    // "yy"/"yyyy" year; any other character is copied.
    QString FormatDate(const QDate& date) const;

private:
    QString m_format = QStringLiteral("mm/dd/yyyy");
    QChar m_promptChar = QLatin1Char('_');
};
