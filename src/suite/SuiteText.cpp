#include "suite/SuiteText.h"

QString SuiteText::searchKey(const QString& text)
{
    return text.toCaseFolded();
}

QString SuiteText::likePrefix(const QString& key)
{
    QString pattern;
    pattern.reserve(key.size() + 1);
    for (const QChar c : key)
    {
        if (c == u'!' || c == u'%' || c == u'_')
            pattern += u'!';
        pattern += c;
    }
    pattern += u'%';
    return pattern;
}

QString SuiteText::timestamp(const QDateTime& moment)
{
    return moment.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}
