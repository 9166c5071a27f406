#include "rules/QCRuleSet.h"

#include <QStringView>

QCRuleSet::QCRuleSet(std::initializer_list<QCRule> rules)
{
    for (const QCRule rule : rules)
        add(rule);
}

const std::array<QCRule, 7>& QCRuleSet::allRules()
{
    static const std::array<QCRule, 7> all{QCRule::Rule12s, QCRule::Rule13s, QCRule::Rule22s,   QCRule::RuleR4s,
                                           QCRule::Rule41s, QCRule::Rule10x, QCRule::RuleDlco12};
    return all;
}

QString QCRuleSet::name(QCRule rule)
{
    switch (rule)
    {
    case QCRule::Rule12s:
        return QStringLiteral("1-2s");
    case QCRule::Rule13s:
        return QStringLiteral("1-3s");
    case QCRule::Rule22s:
        return QStringLiteral("2-2s");
    case QCRule::RuleR4s:
        return QStringLiteral("R-4s");
    case QCRule::Rule41s:
        return QStringLiteral("4-1s");
    case QCRule::Rule10x:
        return QStringLiteral("10x");
    case QCRule::RuleDlco12:
        return QStringLiteral("DLCO-12");
    }
    return QString();
}

QString QCRuleSet::knownNames()
{
    QStringList names;
    for (const QCRule rule : allRules())
        names.append(name(rule));
    return names.join(QStringLiteral(", "));
}

bool QCRuleSet::parse(const QString& text, QCRuleSet& rules, QString& unknownName)
{
    QCRuleSet parsed;
    for (const QStringView item : QStringView(text).split(u','))
    {
        const QStringView trimmed = item.trimmed();
        if (trimmed.isEmpty())
            continue;
        bool known = false;
        for (const QCRule rule : allRules())
        {
            if (trimmed.compare(name(rule), Qt::CaseInsensitive) == 0)
            {
                parsed.add(rule);
                known = true;
                break;
            }
        }
        if (!known)
        {
            unknownName = trimmed.toString();
            return false;
        }
    }
    rules = parsed;
    return true;
}

QList<QCRule> QCRuleSet::rules() const
{
    QList<QCRule> listed;
    for (const QCRule rule : allRules())
    {
        if (contains(rule))
            listed.append(rule);
    }
    return listed;
}

QStringList QCRuleSet::names() const
{
    QStringList listed;
    for (const QCRule rule : rules())
        listed.append(name(rule));
    return listed;
}
