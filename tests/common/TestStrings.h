#pragma once

#include "platform/ComponentFactory.h"
#include "platform/ScopedComponentRegistration.h"
#include "platform/StringServer.h"
#include "platform/modResource.h"

#include <QString>

// A string server for tests: every number from 4000 to 4138 reads "T<number>"
// (so a test can tell which text a box showed), other numbers are unknown.
class TestStringServer final : public StringServer
{
public:
    QString GetText(qint16 id) override
    {
        if (id < 4000 || id > 4138)
            return QString();
        return QStringLiteral("T") + QString::number(id);
    }
};

// Registers TestStringServer for a scope and makes the next lookup use it.
class ScopedTestStrings
{
public:
    ScopedTestStrings()
        : m_registration(StringServer::ClassId, [] { return std::make_unique<TestStringServer>(); })
    {
        ResetResourceServer();
    }
    ~ScopedTestStrings() { ResetResourceServer(); }

private:
    ScopedComponentRegistration m_registration;
};
