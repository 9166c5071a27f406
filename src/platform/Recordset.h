#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <vector>

// The one shape in which data crosses from the suite to the program: named
// fields, rows of values, and a cursor with the classic data-access semantics.
//
// - An empty record set is at BOF and EOF at once.
// - Reading a field or moving past either end raises RuntimeError 3021; so do
//   MoveFirst and MoveLast on an empty set.
// - Any use of a closed record set raises 3704; an unknown field 3265; a bad
//   bookmark or position 3001.
// - Sort keeps the current record; records with equal keys keep their order.
// - A bookmark names a record, not a position, so it survives sorting.
//
// (The end-of-file test is IsEOF() because EOF is a C library macro.)
class Recordset
{
public:
    enum State
    {
        StateClosed = 0,
        StateOpen = 1
    };
    static constexpr qint32 PositionUnknown = -1;
    static constexpr qint32 PositionBOF = -2;
    static constexpr qint32 PositionEOF = -3;

    Recordset() = default; // closed
    // Rows are fitted to the fields: missing values read null, extra ones are dropped.
    explicit Recordset(QStringList fieldNames, std::vector<QVariantList> rows = {});

    // Builder: adds a record at the end (the cursor is left on the first record).
    void AppendRow(QVariantList values);
    // A source that cannot tell its count reports RecordCount -1.
    void SetRecordCountKnown(bool known) { m_countKnown = known; }

    int State() const { return m_open ? StateOpen : StateClosed; }
    bool IsOpen() const { return m_open; }
    void Close();

    int FieldCount() const;
    QString FieldName(int index) const;
    int FieldIndex(const QString& name) const; // -1 when there is none; case-insensitive

    QVariant Value(int index) const;
    QVariant Value(const QString& name) const;

    bool IsBOF() const;
    bool IsEOF() const;
    void MoveFirst();
    void MoveNext();
    void MovePrevious();
    void MoveLast();

    qint32 RecordCount() const;

    // "Field ASC|DESC[, Field ASC|DESC ...]"; an empty text restores the natural order.
    void Sort(const QString& criteria);
    QString SortCriteria() const;

    QVariant Bookmark() const;
    void SetBookmark(const QVariant& bookmark);

    qint32 AbsolutePosition() const;
    void SetAbsolutePosition(qint32 position);

private:
    void requireOpen() const;
    void requireCurrent() const;
    int checkedField(int index) const;
    qint32 size() const { return qint32(m_order.size()); }

    bool m_open = false;
    bool m_countKnown = true;
    QStringList m_fields;
    QHash<QString, int> m_fieldIndex; // lower-cased name -> position
    std::vector<QVariantList> m_rows; // natural order
    std::vector<qint32> m_order;      // current order: indexes into m_rows
    qint32 m_pos = 0;                 // index into m_order; -1 = BOF, size = EOF
    QString m_sort;
};

using RecordsetPtr = std::shared_ptr<Recordset>;

// Orders two field values the way the record set's Sort does: nulls first,
// numbers by value, dates by date, text without regard to case.
int CompareFieldValues(const QVariant& a, const QVariant& b);
