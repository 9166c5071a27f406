#include "suite/SuiteText.h"

#include <string>

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

QString SuiteText::likeLiteralPrefix(const QString& pattern)
{
    QString prefix;
    for (qsizetype i = 0; i < pattern.size(); ++i)
    {
        const QChar c = pattern.at(i);
        if (c == u'%' || c == u'_')
            break;
        if (c == u'!')
        {
            // An escape at the very end escapes nothing; LIKE rejects such a
            // pattern, and the prefix stops there.
            if (++i == pattern.size())
                break;
        }
        prefix += pattern.at(i);
    }
    return prefix;
}

QString SuiteText::prefixSuccessor(const QString& prefix)
{
    constexpr char32_t kLast = 0x10FFFF;
    std::u32string points = prefix.toStdU32String();
    while (!points.empty())
    {
        char32_t& last = points.back();
        if (last < kLast)
        {
            ++last;
            // Surrogates are no characters of their own: UTF-8 cannot hold them.
            if (last >= 0xD800 && last <= 0xDFFF)
                last = 0xE000;
            return QString::fromStdU32String(points);
        }
        // Nothing follows U+10FFFF at this place: the next text is found one
        // place before.
        points.pop_back();
    }
    return QString();
}

QString SuiteText::timestamp(const QDateTime& moment)
{
    return moment.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString SuiteText::numberedName(QString name, int number, qsizetype maxLength)
{
    const QString suffix = QStringLiteral(" (%1)").arg(number);
    while (!name.isEmpty() && name.toUcs4().size() + suffix.size() > maxLength)
        name.chop(name.size() >= 2 && name.back().isLowSurrogate() ? 2 : 1);
    return name + suffix;
}
