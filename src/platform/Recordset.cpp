#include "platform/Recordset.h"

#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"

#include <QDate>
#include <QDateTime>

#include <algorithm>
#include <numeric>

namespace
{
const QString kSource = QStringLiteral("Recordset");

[[noreturn]] void raise(qint32 number)
{
    switch (number)
    {
    case ErrorNumber::NoCurrentRecord:
        throw RuntimeError(number, kSource,
                           QStringLiteral("Either BOF or EOF is True, or the current record has been deleted. "
                                          "Requested operation requires a current record."));
    case ErrorNumber::ObjectClosed:
        throw RuntimeError(number, kSource, QStringLiteral("Operation is not allowed when the object is closed."));
    case ErrorNumber::ItemNotFound:
        throw RuntimeError(number, kSource,
                           QStringLiteral("Item cannot be found in the collection corresponding to the "
                                          "requested name or ordinal."));
    default:
        throw RuntimeError(number, kSource,
                           QStringLiteral("Arguments are of the wrong type, are out of acceptable range, "
                                          "or are in conflict with one another."));
    }
}

// A date value as a moment in time, so that dates and dates with times order together.
QDateTime asDateTime(const QVariant& v)
{
    return v.typeId() == QMetaType::QDate ? v.toDate().startOfDay() : v.toDateTime();
}

struct SortKey
{
    int field = 0;
    bool descending = false;
    // When every value of the field is a number or every one a day (nulls
    // aside), each row's value as one double, read once before sorting:
    // comparing them gives the order CompareFieldValues gives, without
    // looking into two variants for each of the many comparisons.
    bool plain = false;
    std::vector<double> values;
    std::vector<char> nulls;
};

// Reads the field's values into key.values when they allow it.
void PrepareSortKey(SortKey& key, const std::vector<QVariantList>& rows)
{
    bool numbers = false;
    bool days = false;
    key.values.assign(rows.size(), 0);
    key.nulls.assign(rows.size(), 0);
    for (size_t row = 0; row < rows.size(); ++row)
    {
        const QVariant& value = rows[row].at(key.field);
        if (value.isNull())
            key.nulls[row] = 1;
        else if (IsNumberValue(value))
        {
            numbers = true;
            key.values[row] = value.toDouble();
        }
        else if (value.typeId() == QMetaType::QDate)
        {
            days = true;
            key.values[row] = double(value.toDate().toJulianDay());
        }
        else
            return;
    }
    key.plain = !(numbers && days);
}

int CompareSortValues(const SortKey& key, qint32 a, qint32 b)
{
    const bool aNull = key.nulls[size_t(a)];
    const bool bNull = key.nulls[size_t(b)];
    if (aNull || bNull)
        return aNull == bNull ? 0 : (aNull ? -1 : 1);
    const double x = key.values[size_t(a)];
    const double y = key.values[size_t(b)];
    return x < y ? -1 : (y < x ? 1 : 0);
}
} // namespace

int CompareFieldValues(const QVariant& a, const QVariant& b)
{
    const bool aNull = a.isNull();
    const bool bNull = b.isNull();
    if (aNull || bNull)
        return aNull == bNull ? 0 : (aNull ? -1 : 1);
    if (IsNumberValue(a) && IsNumberValue(b))
    {
        const double x = a.toDouble();
        const double y = b.toDouble();
        return x < y ? -1 : (y < x ? 1 : 0);
    }
    if (a.typeId() == QMetaType::QDate && b.typeId() == QMetaType::QDate)
    {
        // Two days order as their starts do, without a time-zone lookup per
        // comparison (which sorting thousands of visits would pay each time).
        const QDate x = a.toDate();
        const QDate y = b.toDate();
        return x < y ? -1 : (y < x ? 1 : 0);
    }
    if (IsDateValue(a) && IsDateValue(b))
    {
        const QDateTime x = asDateTime(a);
        const QDateTime y = asDateTime(b);
        return x < y ? -1 : (y < x ? 1 : 0);
    }
    return a.toString().compare(b.toString(), Qt::CaseInsensitive);
}

Recordset::Recordset(QStringList fieldNames, std::vector<QVariantList> rows)
    : m_open(true)
    , m_fields(std::move(fieldNames))
    , m_rows(std::move(rows))
{
    for (int i = 0; i < m_fields.size(); ++i)
    {
        const QString key = m_fields.at(i).toLower();
        if (!m_fieldIndex.contains(key))
            m_fieldIndex.insert(key, i);
    }
    // A short row reads null in its missing fields; a long one loses the extra values.
    for (QVariantList& row : m_rows)
        row.resize(m_fields.size());
    m_order.resize(m_rows.size());
    std::iota(m_order.begin(), m_order.end(), 0);
    m_pos = 0;
}

void Recordset::AppendRow(QVariantList values)
{
    requireOpen();
    values.resize(m_fields.size());
    m_rows.push_back(std::move(values));
    m_order.push_back(qint32(m_rows.size() - 1));
    m_pos = 0;
}

void Recordset::Close()
{
    requireOpen();
    m_open = false;
    m_rows.clear();
    m_order.clear();
    m_pos = 0;
}

void Recordset::requireOpen() const
{
    if (!m_open)
        raise(ErrorNumber::ObjectClosed);
}

void Recordset::requireCurrent() const
{
    requireOpen();
    if (m_pos < 0 || m_pos >= size())
        raise(ErrorNumber::NoCurrentRecord);
}

int Recordset::FieldCount() const
{
    requireOpen();
    return int(m_fields.size());
}

int Recordset::checkedField(int index) const
{
    requireOpen();
    if (index < 0 || index >= m_fields.size())
        raise(ErrorNumber::ItemNotFound);
    return index;
}

QString Recordset::FieldName(int index) const
{
    return m_fields.at(checkedField(index));
}

int Recordset::FieldIndex(const QString& name) const
{
    requireOpen();
    return m_fieldIndex.value(name.toLower(), -1);
}

QVariant Recordset::Value(int index) const
{
    const int field = checkedField(index);
    requireCurrent();
    return m_rows[size_t(m_order[size_t(m_pos)])].at(field);
}

QVariant Recordset::Value(const QString& name) const
{
    const int index = FieldIndex(name);
    if (index < 0)
        raise(ErrorNumber::ItemNotFound);
    return Value(index);
}

bool Recordset::IsBOF() const
{
    requireOpen();
    return m_order.empty() || m_pos < 0;
}

bool Recordset::IsEOF() const
{
    requireOpen();
    return m_order.empty() || m_pos >= size();
}

void Recordset::MoveFirst()
{
    requireOpen();
    if (m_order.empty())
        raise(ErrorNumber::NoCurrentRecord);
    m_pos = 0;
}

void Recordset::MoveLast()
{
    requireOpen();
    if (m_order.empty())
        raise(ErrorNumber::NoCurrentRecord);
    m_pos = size() - 1;
}

void Recordset::MoveNext()
{
    if (IsEOF())
        raise(ErrorNumber::NoCurrentRecord);
    ++m_pos;
}

void Recordset::MovePrevious()
{
    if (IsBOF())
        raise(ErrorNumber::NoCurrentRecord);
    --m_pos;
}

qint32 Recordset::RecordCount() const
{
    requireOpen();
    return m_countKnown ? size() : -1;
}

void Recordset::Sort(const QString& criteria)
{
    requireOpen();
    std::vector<SortKey> keys;
    const QStringList parts = criteria.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& part : parts)
    {
        QString term = part.trimmed();
        if (term.isEmpty())
            continue;
        bool descending = false;
        if (term.endsWith(QLatin1String(" DESC"), Qt::CaseInsensitive))
        {
            descending = true;
            term.chop(5);
        }
        else if (term.endsWith(QLatin1String(" ASC"), Qt::CaseInsensitive))
        {
            term.chop(4);
        }
        term = term.trimmed();
        if (term.startsWith(QLatin1Char('[')) && term.endsWith(QLatin1Char(']')))
            term = term.mid(1, term.size() - 2);
        const int field = FieldIndex(term);
        if (field < 0)
            raise(ErrorNumber::ItemNotFound);
        SortKey& key = keys.emplace_back();
        key.field = field;
        key.descending = descending;
        PrepareSortKey(key, m_rows);
    }

    const bool hadCurrent = m_pos >= 0 && m_pos < size();
    const qint32 currentRow = hadCurrent ? m_order[size_t(m_pos)] : -1;

    std::iota(m_order.begin(), m_order.end(), 0);
    if (!keys.empty())
    {
        std::stable_sort(m_order.begin(), m_order.end(), [this, &keys](qint32 a, qint32 b) {
            for (const SortKey& key : keys)
            {
                int c = key.plain
                            ? CompareSortValues(key, a, b)
                            : CompareFieldValues(m_rows[size_t(a)].at(key.field), m_rows[size_t(b)].at(key.field));
                if (key.descending)
                    c = -c;
                if (c != 0)
                    return c < 0;
            }
            return false;
        });
    }
    m_sort = criteria;

    if (hadCurrent)
        m_pos = qint32(std::find(m_order.begin(), m_order.end(), currentRow) - m_order.begin());
}

QString Recordset::SortCriteria() const
{
    requireOpen();
    return m_sort;
}

QVariant Recordset::Bookmark() const
{
    requireCurrent();
    return QVariant(double(m_order[size_t(m_pos)] + 1));
}

void Recordset::SetBookmark(const QVariant& bookmark)
{
    requireOpen();
    bool ok = false;
    const double value = bookmark.toDouble(&ok);
    const qint64 row = qint64(value) - 1;
    if (!ok || value != double(qint64(value)) || row < 0 || row >= qint64(m_rows.size()))
        raise(ErrorNumber::ArgumentsOutOfRange);
    m_pos = qint32(std::find(m_order.begin(), m_order.end(), qint32(row)) - m_order.begin());
}

qint32 Recordset::AbsolutePosition() const
{
    if (IsBOF())
        return m_order.empty() ? PositionUnknown : PositionBOF;
    if (IsEOF())
        return PositionEOF;
    return m_pos + 1;
}

void Recordset::SetAbsolutePosition(qint32 position)
{
    requireOpen();
    if (position < 1 || position > size())
        raise(ErrorNumber::ArgumentsOutOfRange);
    m_pos = position - 1;
}
