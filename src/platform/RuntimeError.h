#pragma once

#include <QString>

#include <stdexcept>

// A run-time error as the program's handlers see it: a number, the component
// that raised it and a readable description. Components throw it; every
// handler that talks to the user or to a component catches it at its boundary.
//
// The description is the program's own sentence for the user. A component
// that has a lower layer's text besides (a database driver's message) keeps it
// as the detail, for a message box's details or a log, never in its place.
class RuntimeError : public std::runtime_error
{
public:
    RuntimeError(qint32 number, QString source, QString description, QString detail = QString());

    qint32 number() const { return m_number; }
    const QString& source() const { return m_source; }
    const QString& description() const { return m_description; }
    // The lower layer's own text; empty when there is none.
    const QString& detail() const { return m_detail; }

private:
    qint32 m_number;
    QString m_source;
    QString m_description;
    QString m_detail;
};

// Run-time error numbers the program raises or tests for itself.
namespace ErrorNumber
{
constexpr qint32 Overflow = 6;
constexpr qint32 SubscriptOutOfRange = 9;
constexpr qint32 TypeMismatch = 13;
constexpr qint32 ObjectNotSet = 91;
constexpr qint32 InvalidPropertyValue = 380;
constexpr qint32 CannotCreateComponent = 429;
constexpr qint32 PrinterError = 484;
// Record-set errors keep the numbers data-access code has always used.
constexpr qint32 ArgumentsOutOfRange = 3001;
constexpr qint32 NoCurrentRecord = 3021;
constexpr qint32 ItemNotFound = 3265;
constexpr qint32 ObjectClosed = 3704;
} // namespace ErrorNumber

// The details part of the box that shows the error's description: its number
// and source, what was being done when given, and on a line of its own the
// error's detail (a driver's text):
// "Run-time error 3146 (Norrix QC database) while listing the saved reports."
QString RuntimeErrorDetail(const RuntimeError& error, const QString& whileDoing = QString());

// The error of a component that handed back no object where one was due.
[[noreturn]] void RaiseObjectNotSet(const QString& source);
