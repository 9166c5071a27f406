#pragma once

#include <QString>

#include <stdexcept>

// A run-time error as the program's handlers see it: a number, the component
// that raised it and a readable description. Components throw it; every
// handler that talks to the user or to a component catches it at its boundary.
class RuntimeError : public std::runtime_error
{
public:
    RuntimeError(qint32 number, QString source, QString description);

    qint32 number() const { return m_number; }
    const QString& source() const { return m_source; }
    const QString& description() const { return m_description; }

private:
    qint32 m_number;
    QString m_source;
    QString m_description;
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

// The error's number and source, for the details part of the box that shows
// its description: "Run-time error 3146 (Norrix QC database)".
QString RuntimeErrorDetail(const RuntimeError& error);

// The error of a component that handed back no object where one was due.
[[noreturn]] void RaiseObjectNotSet(const QString& source);
