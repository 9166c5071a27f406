#pragma once

#include "components/CalcEngine.h"
#include "platform/RuntimeError.h"

#include <QSet>
#include <QStringList>

#include <functional>
#include <memory>

// A calculation engine for window tests. Every engine object the factory
// creates shares one Script: the test sets the answers up front and reads
// back every call in order.
class FakeCalcEngine final : public CalcEngine
{
public:
    struct Script
    {
        qint32 openStatus = 0;
        QSet<qint32> rights{RightRunReports, RightEditReports};
        qint32 logoutMinutes = 0;
        qint32 startStatus = 0;
        // ReadOnlyReason's answer: why the database takes no changes.
        QString readOnlyReason;
        // Throws RuntimeError from the operation of this name ("StartCheck", "OpenApplication", ...).
        QString failOn;
        // Everything asked, in order: "OpenApplication 6", "HasRight 500", "PatientNotify 9 6 0 P1",
        // "CloseApplication 6 true", "released" (the object was destroyed).
        QStringList calls;
        // Called with every entry of calls as it is made.
        std::function<void(const QString&)> onCall;
        int created = 0;
    };

    explicit FakeCalcEngine(std::shared_ptr<Script> script)
        : m_script(std::move(script))
    {
        ++m_script->created;
    }
    ~FakeCalcEngine() override { record(QStringLiteral("released")); }

    static ComponentFactory::Creator creator(const std::shared_ptr<Script>& script)
    {
        return [script] { return std::make_unique<FakeCalcEngine>(script); };
    }

    qint32 OpenApplication(qint32 applicationNumber) override
    {
        call(QStringLiteral("OpenApplication %1").arg(applicationNumber), QStringLiteral("OpenApplication"));
        return m_script->openStatus;
    }
    bool HasRight(qint32 right) override
    {
        call(QStringLiteral("HasRight %1").arg(right), QStringLiteral("HasRight"));
        return m_script->rights.contains(right);
    }
    QString MissingRightReason(qint32 right) override
    {
        call(QStringLiteral("MissingRightReason %1").arg(right), QStringLiteral("MissingRightReason"));
        return m_script->rights.contains(right) ? QString() : QStringLiteral("no right %1 in the test").arg(right);
    }
    qint32 AutoLogoutMinutes() override
    {
        call(QStringLiteral("AutoLogoutMinutes"), QStringLiteral("AutoLogoutMinutes"));
        return m_script->logoutMinutes;
    }
    qint32 StartCheck() override
    {
        call(QStringLiteral("StartCheck"), QStringLiteral("StartCheck"));
        return m_script->startStatus;
    }
    QString StartCheckReason() override
    {
        call(QStringLiteral("StartCheckReason"), QStringLiteral("StartCheckReason"));
        return m_script->startStatus == 0 ? QString() : QStringLiteral("refused by the test");
    }
    QString ReadOnlyReason() override
    {
        call(QStringLiteral("ReadOnlyReason"), QStringLiteral("ReadOnlyReason"));
        return m_script->readOnlyReason;
    }
    void PatientNotify(qint32 eventCode, qint32 applicationNumber, qint32 reserved, const QString& patientId) override
    {
        call(QStringLiteral("PatientNotify %1 %2 %3 %4")
                 .arg(eventCode)
                 .arg(applicationNumber)
                 .arg(reserved)
                 .arg(patientId),
             QStringLiteral("PatientNotify"));
    }
    void CloseApplication(qint32 applicationNumber, bool autoLogout) override
    {
        call(QStringLiteral("CloseApplication %1 %2")
                 .arg(applicationNumber)
                 .arg(autoLogout ? QStringLiteral("true") : QStringLiteral("false")),
             QStringLiteral("CloseApplication"));
    }

private:
    void record(const QString& what)
    {
        m_script->calls.append(what);
        if (m_script->onCall)
            m_script->onCall(what);
    }
    void call(const QString& what, const QString& operation)
    {
        record(what);
        if (m_script->failOn == operation)
            throw RuntimeError(-2147418113, QStringLiteral("FakeCalcEngine"),
                               QStringLiteral("The engine failed in ") + operation);
    }

    std::shared_ptr<Script> m_script;
};
