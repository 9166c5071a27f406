#pragma once

#include <QDate>
#include <QString>
#include <QVariant>

// Conversions with the rules the program's texts and numbers have always
// followed. Number and date texts use the system locale (QLocale()), except
// the month-first "mm/dd/yyyy" texts, which are the program's own.

// "0" & value converted to a 32-bit whole number: null and "" read as 0,
// "12" as 12, "2.5" as 2 (half to even). Text that is no number raises
// RuntimeError 13 (type mismatch); a number beyond 32 bits raises 6 (overflow).
qint32 WholeNumberOfZeroPrefixed(const QVariant& value);

// A value converted to a 32-bit whole number, half to even (13 / 6 as above).
qint32 ToWholeNumber(const QVariant& value);

// Rounds half to even: 0.5 -> 0, 1.5 -> 2, 2.5 -> 2, -0.5 -> -0.
double RoundHalfEven(double value);
// Rounds half to even at the given number of decimal places (Round(x, n)).
double RoundHalfEven(double value, int decimals);
// Half to even into a 32-bit integer; beyond its range raises 6 (overflow).
qint32 RoundToInt32(double value);

// True for month-first date texts "M/d/yyyy" and "mm/dd/yyyy" naming a real
// day ("13/45/2024" and "02/30/2024" are refused), and for date values.
bool IsDate(const QVariant& value);
// The date of a month-first text or a date value; invalid QDate when it is none.
QDate ToDate(const QVariant& value);

// "mm/dd/yyyy": two-digit month and day, four-digit year.
QString FormatMonthDayYear(const QDate& date);
// The system's long date form.
QString FormatLongDate(const QDate& date);

// True for numbers, and for texts that read as a number in the system locale
// (blanks around it allowed; "", null and dates are not numeric).
bool IsNumeric(const QVariant& value);
// The number of a numeric value or text (0 when it is none).
double ToDouble(const QVariant& value);

// The number with the given decimals, a leading zero, a minus sign (never
// parentheses) and the locale's digit grouping: 1234.5 -> "1,234.50" and
// -0.5 -> "-0.50" in en_US.
QString FormatNumber(double value, int decimals);

// The general text of a number: the shortest form with up to 15 significant
// digits, as a classic BASIC prints a double: 0.1 + 0.2 -> "0.3",
// 1e-7 -> "1E-07", 123456789012345678 -> "1.23456789012346E+17".
QString GeneralNumberText(double value);

// A value turned into text the null-safe way (value & ""): null gives "".
QString TextOf(const QVariant& value);
