#include "suite/SuiteResultImport.h"

#include "platform/RuntimeError.h"
#include "suite/CsvReader.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSchema.h"
#include "suite/SuiteText.h"
#include "suite/SuiteTransaction.h"

#include <QIODevice>
#include <QSqlQuery>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <tuple>

namespace
{
// The schema's widths of the texts a line carries.
constexpr qsizetype kIdWidth = 40;
constexpr qsizetype kNameWidth = 80;

// Readings handed to the database at a time: the rows of one batch are all
// in memory as variants at once.
constexpr size_t kWriteBatch = 50000;

const QString kTabNames[2] = {QStringLiteral("PF"), QStringLiteral("GX")};

enum class Status : quint8
{
    Added,
    Replaced,
    Unchanged,
};

// yyyy-mm-dd, a real day.
QDate readDate(const QString& text)
{
    if (text.size() != 10 || text.at(4) != u'-' || text.at(7) != u'-')
        return QDate();
    for (const qsizetype i : {0, 1, 2, 3, 5, 6, 8, 9})
    {
        if (text.at(i) < u'0' || text.at(i) > u'9')
            return QDate();
    }
    return QDate(text.mid(0, 4).toInt(), text.mid(5, 2).toInt(), text.mid(8, 2).toInt());
}

// A decimal number with a point: an optional sign, digits with at most one
// point among or before them, and an optional exponent. No blanks, no
// thousands separators, no "inf" or "nan".
bool readNumber(const QString& text, double& value)
{
    const QByteArray latin = text.toLatin1();
    const char* p = latin.constData();
    const char* end = p + latin.size();
    const char* start = p;
    if (p != end && (*p == '+' || *p == '-'))
        ++p;
    bool digits = false;
    bool point = false;
    for (; p != end; ++p)
    {
        if (*p >= '0' && *p <= '9')
            digits = true;
        else if (*p == '.' && !point)
            point = true;
        else
            break;
    }
    if (!digits)
        return false;
    if (p != end && (*p == 'e' || *p == 'E'))
    {
        ++p;
        if (p != end && (*p == '+' || *p == '-'))
            ++p;
        const char* exponent = p;
        while (p != end && *p >= '0' && *p <= '9')
            ++p;
        if (p == exponent)
            return false;
    }
    if (p != end)
        return false;
    if (*start == '+')
        ++start;
    const std::from_chars_result result = std::from_chars(start, end, value);
    return result.ec == std::errc() && result.ptr == end && std::isfinite(value);
}

quint64 visitKey(quint32 patient, const QDate& date, qint16 tab)
{
    return (quint64(patient) << 32) | (quint64(date.toJulianDay()) << 1) | quint64(tab);
}

QString quoted(const QString& text)
{
    return u'"' + text + u'"';
}

// A name as the database compares it.
bool sameName(const QString& a, const QString& b)
{
    return a == b || SuiteText::searchKey(a) == SuiteText::searchKey(b);
}
} // namespace

struct SuiteResultImport::Patient
{
    QString id;
    QString lastName;
    QString firstName;
    QString middleName;
    QDate birthday;
    qint32 key = 0;  // patient_id of a known patient; 0 for a new one
    qint64 line = 0; // where a new patient was first given
    QString knownAs; // a stored ID that differs from this one only in case
    bool anyStoredVisit = false;
};

struct SuiteResultImport::Visit
{
    quint32 patient;
    QDate date;
    qint16 tab;
    qint32 storedId; // 0 for a new visit
};

struct SuiteResultImport::Reading
{
    quint32 visit;
    qint32 tableId;
    qint32 varId;
    quint32 line;
    double value;
    bool hasValue;
    Status status;

    bool sameKey(const Reading& other) const
    {
        return visit == other.visit && tableId == other.tableId && varId == other.varId;
    }
    bool operator<(const Reading& other) const
    {
        return std::tie(visit, tableId, varId, line) < std::tie(other.visit, other.tableId, other.varId, other.line);
    }
};

// The catalogue's names per tab: exact names first, then without regard to case.
struct SuiteResultImport::Catalogue
{
    struct Names
    {
        QHash<QString, qint32> exact;
        QHash<QString, qint32> folded;
        QHash<qint32, QString> byId;

        void add(qint32 id, const QString& name)
        {
            exact.insert(name, id);
            folded.insert(SuiteText::searchKey(name), id);
            byId.insert(id, name);
        }
        qint32 find(const QString& name) const
        {
            const auto it = exact.constFind(name);
            if (it != exact.cend())
                return *it;
            return folded.value(SuiteText::searchKey(name), 0);
        }
    };

    Names tables[2];
    Names variables[2];
};

QString SuiteResultImport::Error::text() const
{
    if (column.isEmpty())
        return QStringLiteral("line %1: %2").arg(line).arg(reason);
    return QStringLiteral("line %1, %2: %3").arg(line).arg(column, reason);
}

SuiteResultImport::SuiteResultImport(SuiteDatabase& db)
    : m_db(db)
{
    std::fill(std::begin(m_columns), std::end(m_columns), -1);
}

SuiteResultImport::~SuiteResultImport() = default;

QString SuiteResultImport::columnName(int column)
{
    static const QString names[ColumnCount] = {QStringLiteral("PatientID"), QStringLiteral("LastName"),
                                               QStringLiteral("FirstName"), QStringLiteral("MiddleName"),
                                               QStringLiteral("Birthday"),  QStringLiteral("VisitDate"),
                                               QStringLiteral("Tab"),       QStringLiteral("Table"),
                                               QStringLiteral("Variable"),  QStringLiteral("Value")};
    return column >= 0 && column < ColumnCount ? names[column] : QString();
}

void SuiteResultImport::addError(qint64 line, int column, const QString& reason)
{
    if (!stopped())
        m_errors.push_back({line, columnName(column), reason});
}

void SuiteResultImport::report(const QString& text)
{
    if (m_showProgress && m_progress)
        m_progress(text);
}

bool SuiteResultImport::changesSomething() const
{
    return m_counts.patientsAdded + m_counts.visitsAdded + m_counts.readingsAdded + m_counts.readingsReplaced > 0;
}

QString SuiteResultImport::summary() const
{
    return QStringLiteral("%1 patients, %2 visits and %3 readings added, %4 readings replaced")
        .arg(m_counts.patientsAdded)
        .arg(m_counts.visitsAdded)
        .arg(m_counts.readingsAdded)
        .arg(m_counts.readingsReplaced);
}

void SuiteResultImport::loadCatalogue()
{
    m_catalogue = std::make_unique<Catalogue>();
    QSqlQuery tables = m_db.exec(QStringLiteral("SELECT table_id, tab, name FROM test_tables"));
    while (tables.next())
        m_catalogue->tables[tables.value(1).toInt() == 1 ? 1 : 0].add(tables.value(0).toInt(),
                                                                      tables.value(2).toString());
    QSqlQuery variables = m_db.exec(QStringLiteral("SELECT var_id, tab, name FROM variables"));
    while (variables.next())
        m_catalogue->variables[variables.value(1).toInt() == 1 ? 1 : 0].add(variables.value(0).toInt(),
                                                                            variables.value(2).toString());
}

bool SuiteResultImport::check(QIODevice& file, qint64 size)
{
    const int version = SuiteSchema::version(m_db);
    if (version != SuiteSchema::CurrentVersion)
        throw RuntimeError(SuiteDatabase::ErrorQueryFailed, SuiteDatabase::ErrorSource,
                           QStringLiteral("The QC database has schema version %1, not %2; run \"NorrixDBQuery auto\" "
                                          "first.")
                               .arg(version)
                               .arg(SuiteSchema::CurrentVersion));
    loadCatalogue();

    CsvReader reader(file);
    if (!reader.readRecord())
    {
        addError(1, -1, QStringLiteral("the file is empty; its first line must name the columns"));
        return false;
    }
    if (!reader.error().isEmpty())
    {
        addError(reader.recordLine(), -1, reader.error());
        return false;
    }
    if (!readHeader(reader.fields(), reader.recordLine()))
        return false;

    int reportedTenth = 0;
    while (!stopped() && reader.readRecord())
    {
        const qint64 line = reader.recordLine();
        if (!m_showProgress && line > ProgressLines)
            m_showProgress = true;
        if (m_showProgress && size > 0 && reader.bytesRead() * 10 / size > reportedTenth)
        {
            reportedTenth = int(reader.bytesRead() * 10 / size);
            report(QStringLiteral("checked %1 lines (%2%)").arg(line).arg(reportedTenth * 10));
        }
        if (!reader.error().isEmpty())
            addError(line, -1, reader.error());
        else if (reader.fields().size() != m_fieldCount)
            addError(line, -1,
                     QStringLiteral("the line has %1 fields; the header has %2")
                         .arg(reader.fields().size())
                         .arg(m_fieldCount));
        else
            checkRecord(reader.fields(), line);
    }
    if (!stopped())
        findDuplicates();
    std::stable_sort(m_errors.begin(), m_errors.end(), [](const Error& a, const Error& b) { return a.line < b.line; });
    if (!m_errors.empty())
        return false;
    compareWithStored();
    m_checked = true;
    return true;
}

bool SuiteResultImport::readHeader(const QStringList& fields, qint64 line)
{
    m_fieldCount = fields.size();
    for (qsizetype i = 0; i < fields.size(); ++i)
    {
        const QString name = fields.at(i).trimmed();
        int column = -1;
        for (int c = 0; c < ColumnCount; ++c)
        {
            if (name.compare(columnName(c), Qt::CaseInsensitive) == 0)
                column = c;
        }
        if (column < 0)
            addError(line, -1,
                     QStringLiteral("the column %1 is not one of %2")
                         .arg(quoted(name), QStringLiteral("PatientID, LastName, FirstName, MiddleName, "
                                                           "Birthday, VisitDate, Tab, Table, Variable, Value")));
        else if (m_columns[column] >= 0)
            addError(line, -1, QStringLiteral("the column %1 is named twice").arg(columnName(column)));
        else
            m_columns[column] = int(i);
    }
    for (int c = 0; c < ColumnCount; ++c)
    {
        if (m_columns[c] < 0 && c != MiddleName && c != Birthday)
            addError(line, -1, QStringLiteral("the column %1 is missing").arg(columnName(c)));
    }
    return m_errors.empty();
}

void SuiteResultImport::checkRecord(const QStringList& fields, qint64 line)
{
    const auto field = [&](int column) {
        return m_columns[column] < 0 ? QString() : fields.at(m_columns[column]).trimmed();
    };
    const size_t errorsBefore = m_errors.size();

    const QString id = field(PatientID);
    if (id.isEmpty())
        addError(line, PatientID, QStringLiteral("is empty"));
    else if (id.size() > kIdWidth)
        addError(line, PatientID, QStringLiteral("is longer than %1 characters").arg(kIdWidth));
    for (const int column : {LastName, FirstName, MiddleName})
    {
        if (field(column).size() > kNameWidth)
            addError(line, column, QStringLiteral("is longer than %1 characters").arg(kNameWidth));
    }
    if (field(LastName).isEmpty())
        addError(line, LastName, QStringLiteral("is empty"));
    const QString birthdayText = field(Birthday);
    if (!birthdayText.isEmpty() && !readDate(birthdayText).isValid())
        addError(line, Birthday, QStringLiteral("%1 is not a date of the form yyyy-mm-dd").arg(quoted(birthdayText)));
    // The patient is looked for (and a new one taken from the line) only when the line names it soundly.
    const bool patientGiven = m_errors.size() == errorsBefore;

    const QString dateText = field(VisitDate);
    const QDate date = readDate(dateText);
    if (dateText.isEmpty())
        addError(line, VisitDate, QStringLiteral("is empty"));
    else if (!date.isValid())
        addError(line, VisitDate, QStringLiteral("%1 is not a date of the form yyyy-mm-dd").arg(quoted(dateText)));

    const QString tabText = field(Tab);
    qint16 tab = -1;
    for (qint16 t = 0; t < 2; ++t)
    {
        if (tabText.compare(kTabNames[t], Qt::CaseInsensitive) == 0)
            tab = t;
    }
    if (tab < 0)
        addError(line, Tab, QStringLiteral("%1 is not a tab; a tab is PF or GX").arg(quoted(tabText)));

    const QString tableText = field(Table);
    const QString variableText = field(Variable);
    qint32 tableId = 0;
    qint32 varId = 0;
    if (tab >= 0)
    {
        tableId = m_catalogue->tables[tab].find(tableText);
        if (tableId == 0)
            addError(line, Table, QStringLiteral("the %1 tab has no table %2").arg(kTabNames[tab], quoted(tableText)));
        varId = m_catalogue->variables[tab].find(variableText);
        if (varId == 0)
        {
            if (tableId != 0)
                addError(line, Variable,
                         QStringLiteral("the %1 table %2 has no variable %3")
                             .arg(kTabNames[tab], quoted(m_catalogue->tables[tab].byId.value(tableId)),
                                  quoted(variableText)));
            else
                addError(line, Variable,
                         QStringLiteral("the %1 tab has no variable %2").arg(kTabNames[tab], quoted(variableText)));
        }
    }

    const QString valueText = field(Value);
    double value = 0;
    const bool hasValue = !valueText.isEmpty();
    if (hasValue && !readNumber(valueText, value))
        addError(line, Value,
                 QStringLiteral("%1 is not a number (digits with a point before the decimals)").arg(quoted(valueText)));

    int patient = -1;
    if (patientGiven && !stopped())
    {
        patient = patientOf(id, fields, line);
        checkNames(patient, fields, line);
    }

    if (m_errors.size() != errorsBefore || stopped())
        return;
    const quint32 visit = visitOf(patient, date, tab);
    m_readings.push_back({visit, tableId, varId, quint32(line), value, hasValue, Status::Added});
}

int SuiteResultImport::patientOf(const QString& id, const QStringList& fields, qint64 line)
{
    const auto known = m_patientIndex.constFind(id);
    if (known != m_patientIndex.cend())
        return *known;

    const auto field = [&](int column) {
        return m_columns[column] < 0 ? QString() : fields.at(m_columns[column]).trimmed();
    };
    Patient patient;
    patient.id = id;
    QSqlQuery stored =
        m_db.exec(QStringLiteral("SELECT patient_id, id_num, last_name, first_name FROM patients WHERE id_key = ?"),
                  {SuiteText::searchKey(id)});
    while (stored.next())
    {
        if (stored.value(1).toString() == id)
        {
            patient.key = stored.value(0).toInt();
            patient.lastName = stored.value(2).toString();
            patient.firstName = stored.value(3).toString();
            break;
        }
        patient.knownAs = stored.value(1).toString();
    }
    if (patient.key != 0)
    {
        patient.knownAs.clear();
        QSqlQuery visits = m_db.exec(
            QStringLiteral("SELECT visit_id, visit_date, tab FROM visits WHERE patient_id = ? ORDER BY visit_id"),
            {patient.key});
        const quint32 index = quint32(m_patients.size());
        while (visits.next())
        {
            // Should a day hold two visits of the tab, the first one stands for the day.
            const quint64 key = visitKey(index, visits.value(1).toDate(), qint16(visits.value(2).toInt()));
            if (!m_storedVisits.contains(key))
                m_storedVisits.insert(key, visits.value(0).toInt());
        }
    }
    else
    {
        patient.lastName = field(LastName);
        patient.firstName = field(FirstName);
        patient.middleName = field(MiddleName);
        patient.birthday = readDate(field(Birthday));
        patient.line = line;
    }
    const int index = int(m_patients.size());
    m_patients.push_back(std::move(patient));
    m_patientIndex.insert(id, index);
    return index;
}

void SuiteResultImport::checkNames(int index, const QStringList& fields, qint64 line)
{
    const Patient& patient = m_patients[size_t(index)];
    const auto field = [&](int column) {
        return m_columns[column] < 0 ? QString() : fields.at(m_columns[column]).trimmed();
    };
    if (!patient.knownAs.isEmpty())
    {
        addError(line, PatientID,
                 QStringLiteral("the database knows this patient as %1; write the ID as it is stored")
                     .arg(quoted(patient.knownAs)));
        return;
    }
    if (patient.key != 0)
    {
        if (!sameName(field(LastName), patient.lastName))
            addError(line, LastName,
                     QStringLiteral("%1 is not the last name of the known patient %2 (%3)")
                         .arg(quoted(field(LastName)), quoted(patient.id), quoted(patient.lastName)));
        if (!sameName(field(FirstName), patient.firstName))
            addError(line, FirstName,
                     QStringLiteral("%1 is not the first name of the known patient %2 (%3)")
                         .arg(quoted(field(FirstName)), quoted(patient.id), quoted(patient.firstName)));
        return;
    }
    if (patient.line == line)
        return;
    const auto differs = [&](int column, const QString& given) {
        addError(line, column,
                 QStringLiteral("%1 differs from %2 given for the new patient %3 on line %4")
                     .arg(quoted(field(column)), quoted(given), quoted(patient.id))
                     .arg(patient.line));
    };
    if (!sameName(field(LastName), patient.lastName))
        differs(LastName, patient.lastName);
    if (!sameName(field(FirstName), patient.firstName))
        differs(FirstName, patient.firstName);
    if (!sameName(field(MiddleName), patient.middleName))
        differs(MiddleName, patient.middleName);
    const QDate birthday = readDate(field(Birthday));
    if (birthday != patient.birthday && (birthday.isValid() || field(Birthday).isEmpty()))
        differs(Birthday, patient.birthday.isValid() ? patient.birthday.toString(Qt::ISODate) : QString());
}

quint32 SuiteResultImport::visitOf(int patient, const QDate& date, qint16 tab)
{
    const quint64 key = visitKey(quint32(patient), date, tab);
    const auto it = m_visitIndex.constFind(key);
    if (it != m_visitIndex.cend())
        return *it;
    const quint32 index = quint32(m_visits.size());
    const qint32 storedId = m_storedVisits.value(key, 0);
    m_visits.push_back({quint32(patient), date, tab, storedId});
    m_visitIndex.insert(key, index);
    if (storedId != 0)
        m_patients[size_t(patient)].anyStoredVisit = true;
    return index;
}

void SuiteResultImport::findDuplicates()
{
    std::sort(m_readings.begin(), m_readings.end());
    for (size_t i = 1; i < m_readings.size(); ++i)
    {
        const Reading& first = m_readings[i - 1];
        const Reading& again = m_readings[i];
        if (!again.sameKey(first))
            continue;
        const qint16 tab = m_visits[again.visit].tab;
        addError(again.line, Variable,
                 QStringLiteral("the visit's %1 in the table %2 is given on line %3 already")
                     .arg(quoted(m_catalogue->variables[tab].byId.value(again.varId)),
                          quoted(m_catalogue->tables[tab].byId.value(again.tableId)))
                     .arg(first.line));
    }
}

void SuiteResultImport::compareWithStored()
{
    // Visits the database has: the file's readings of them are compared with the stored readings.
    QHash<qint32, quint32> storedVisits;
    for (quint32 v = 0; v < quint32(m_visits.size()); ++v)
    {
        if (m_visits[v].storedId != 0)
            storedVisits.insert(m_visits[v].storedId, v);
    }
    QSqlQuery stored = m_db.prepare(QStringLiteral("SELECT r.visit_id, r.table_id, r.var_id, r.result_value "
                                                   "FROM results r JOIN visits v ON v.visit_id = r.visit_id "
                                                   "WHERE v.patient_id = ?"));
    for (const Patient& patient : m_patients)
    {
        if (!patient.anyStoredVisit)
            continue;
        m_db.run(stored, {patient.key});
        while (stored.next())
        {
            const auto visit = storedVisits.constFind(stored.value(0).toInt());
            if (visit == storedVisits.cend())
                continue;
            const Reading probe{*visit, stored.value(1).toInt(), stored.value(2).toInt(), 0, 0, false, Status::Added};
            const auto found = std::lower_bound(m_readings.begin(), m_readings.end(), probe);
            if (found == m_readings.end() || !found->sameKey(probe))
                continue;
            const QVariant value = stored.value(3);
            const bool same = value.isNull() ? !found->hasValue : found->hasValue && found->value == value.toDouble();
            found->status = same ? Status::Unchanged : Status::Replaced;
        }
        stored.finish();
    }

    m_counts = Counts();
    for (const Patient& patient : m_patients)
    {
        if (patient.key == 0)
            ++m_counts.patientsAdded;
    }
    for (const Visit& visit : m_visits)
    {
        if (visit.storedId == 0)
            ++m_counts.visitsAdded;
    }
    for (const Reading& reading : m_readings)
    {
        if (reading.status == Status::Added)
            ++m_counts.readingsAdded;
        else if (reading.status == Status::Replaced)
            ++m_counts.readingsReplaced;
        else
            ++m_counts.readingsUnchanged;
    }
}

void SuiteResultImport::write()
{
    if (!m_checked)
        throw RuntimeError(SuiteDatabase::ErrorQueryFailed, SuiteDatabase::ErrorSource,
                           QStringLiteral("The file has not been checked."));
    if (!changesSomething())
        return;

    // Where each visit's readings start in the sorted readings.
    std::vector<size_t> firstReading(m_visits.size() + 1, m_readings.size());
    for (size_t r = m_readings.size(); r-- > 0;)
        firstReading[m_readings[r].visit] = r;
    for (size_t v = m_visits.size(); v-- > 0;)
        firstReading[v] = std::min(firstReading[v], firstReading[v + 1]);

    const auto resultOf = [](const Reading& reading) {
        return SuiteDataLoader::Result{reading.tableId, reading.varId,
                                       reading.hasValue ? QVariant(reading.value) : QVariant()};
    };
    const qint64 toWrite = m_counts.readingsAdded + m_counts.readingsReplaced;
    qint64 written = 0;
    int reportedTenth = 0;
    const auto progress = [&](size_t count) {
        written += qint64(count);
        const int tenth = toWrite > 0 ? int(written * 10 / toWrite) : 10;
        if (tenth > reportedTenth)
        {
            reportedTenth = tenth;
            report(QStringLiteral("wrote %1 of %2 readings (%3%)").arg(written).arg(toWrite).arg(tenth * 10));
        }
    };

    SuiteTransaction transaction(m_db);
    SuiteDataLoader loader(m_db);

    std::vector<qint32> keys(m_patients.size());
    for (size_t p = 0; p < m_patients.size(); ++p)
    {
        const Patient& patient = m_patients[p];
        keys[p] = patient.key != 0 ? patient.key
                                   : loader.addPatient({patient.id, patient.lastName, patient.firstName,
                                                        patient.middleName, patient.birthday});
    }

    // New visits with all their readings, a patient at a time, in batches.
    std::vector<quint32> newVisits;
    for (quint32 v = 0; v < quint32(m_visits.size()); ++v)
    {
        if (m_visits[v].storedId == 0)
            newVisits.push_back(v);
    }
    std::stable_sort(newVisits.begin(), newVisits.end(),
                     [&](quint32 a, quint32 b) { return m_visits[a].patient < m_visits[b].patient; });
    std::vector<SuiteDataLoader::Visit> batch;
    size_t batchReadings = 0;
    quint32 batchPatient = 0;
    const auto flushVisits = [&] {
        if (batch.empty())
            return;
        loader.addVisits(keys[batchPatient], batch);
        progress(batchReadings);
        batch.clear();
        batchReadings = 0;
    };
    for (const quint32 v : newVisits)
    {
        const Visit& visit = m_visits[v];
        if (visit.patient != batchPatient || batchReadings >= kWriteBatch)
            flushVisits();
        batchPatient = visit.patient;
        SuiteDataLoader::Visit row{visit.date, visit.tab, {}};
        row.results.reserve(qsizetype(firstReading[v + 1] - firstReading[v]));
        for (size_t r = firstReading[v]; r < firstReading[v + 1]; ++r)
            row.results.append(resultOf(m_readings[r]));
        batchReadings += size_t(row.results.size());
        batch.push_back(std::move(row));
    }
    flushVisits();

    // Readings of stored visits: new ones added, changed ones replaced.
    std::vector<SuiteDataLoader::VisitResult> added;
    std::vector<SuiteDataLoader::VisitResult> replaced;
    for (const Reading& reading : m_readings)
    {
        const qint32 visitId = m_visits[reading.visit].storedId;
        if (visitId == 0 || reading.status == Status::Unchanged)
            continue;
        (reading.status == Status::Added ? added : replaced).push_back({visitId, resultOf(reading)});
        if (added.size() + replaced.size() >= kWriteBatch)
        {
            loader.addResults(added);
            loader.replaceResults(replaced);
            progress(added.size() + replaced.size());
            added.clear();
            replaced.clear();
        }
    }
    loader.addResults(added);
    loader.replaceResults(replaced);
    progress(added.size() + replaced.size());
    transaction.commit();

    // The planner's figures for the tables that grew.
    SuiteSchema::refreshStatistics(m_db,
                                   {QStringLiteral("patients"), QStringLiteral("visits"), QStringLiteral("results")});
}
