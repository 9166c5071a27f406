#pragma once

#include "rules/QCRule.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <initializer_list>

// A set of QC rules: the rules a report is checked against (empty: rule
// checking is off), or the rules one reading broke.
//
// The setting "QC Rules" and the renderer's --rules list rules by name,
// separated by commas: "1-2s, 2-2s, R-4s". Names compare without regard to
// case, blanks around them are dropped, and an empty item (",,", a comma at
// the end) is no rule. A name listed twice counts once.
class QCRuleSet
{
public:
    QCRuleSet() = default;
    QCRuleSet(std::initializer_list<QCRule> rules);

    // Every rule, in the program's order.
    static const std::array<QCRule, 7>& allRules();
    // The rule's name: "1-2s", "1-3s", "2-2s", "R-4s", "4-1s", "10x", "DLCO-12".
    static QString name(QCRule rule);
    // Every rule's name in the program's order, joined by ", ".
    static QString knownNames();

    // The rules that text lists. False, with unknownName set to the first
    // item that names no rule (blanks around it dropped) and rules left as
    // they were, when the text lists one the program does not know.
    static bool parse(const QString& text, QCRuleSet& rules, QString& unknownName);

    bool isEmpty() const { return m_bits == 0; }
    bool contains(QCRule rule) const { return (m_bits & bit(rule)) != 0; }
    void add(QCRule rule) { m_bits |= bit(rule); }
    void add(const QCRuleSet& other) { m_bits |= other.m_bits; }

    // The rules of the set, in the program's order.
    QList<QCRule> rules() const;
    // Their names, in the program's order.
    QStringList names() const;
    // Their names joined by ", ": "2-2s, 4-1s".
    QString text() const { return names().join(QStringLiteral(", ")); }

    bool operator==(const QCRuleSet&) const = default;

private:
    static unsigned bit(QCRule rule) { return 1u << unsigned(rule); }

    unsigned m_bits = 0;
};
