#pragma once

#include "components/PatientQuery.h"

#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>
#include <vector>

// A patient query that answers with a record set the test builds, throws, or
// returns none; it logs every call.
class FakePatientQuery final : public PatientQuery
{
public:
    struct Script
    {
        std::function<RecordsetPtr()> answer;
        QStringList calls; // "FindByIdNum <text>", "FindByName <last>|<first>|<mid>"
    };

    explicit FakePatientQuery(std::shared_ptr<Script> script)
        : m_script(std::move(script))
    {}

    static ComponentFactory::Creator creator(const std::shared_ptr<Script>& script)
    {
        return [script] { return std::make_unique<FakePatientQuery>(script); };
    }

    RecordsetPtr FindByIdNum(const QString& idNum) override
    {
        m_script->calls.append(QStringLiteral("FindByIdNum ") + idNum);
        return m_script->answer();
    }
    RecordsetPtr FindByName(const QString& lastName, const QString& firstName, const QString& midName) override
    {
        m_script->calls.append(QStringLiteral("FindByName ") + lastName + QLatin1Char('|') + firstName +
                               QLatin1Char('|') + midName);
        return m_script->answer();
    }

    // A record set with the query's fields; each row: id, last, first, middle, birthday.
    static RecordsetPtr rows(const std::vector<QVariantList>& values)
    {
        return std::make_shared<Recordset>(QStringList{QStringLiteral("PatientIDNum"),
                                                       QStringLiteral("PatientLastName"),
                                                       QStringLiteral("PatientFirstName"),
                                                       QStringLiteral("PatientMidName"), QStringLiteral("Birthday")},
                                           values);
    }

private:
    std::shared_ptr<Script> m_script;
};
