#pragma once

#include <QDate>
#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class QIODevice;
class SuiteDatabase;

// Brings a laboratory's own QC results in from a comma-separated file (see
// CsvReader): a header line naming the columns PatientID, LastName,
// FirstName, MiddleName, Birthday, VisitDate, Tab, Table, Variable and Value
// (in any order and case; MiddleName and Birthday may be left out), then one
// reading per line.
//
// - A visit is the patient's visit on VisitDate in the tab; a reading is the
//   visit's value of Variable in Table. A new reading is added, a stored one
//   gets the file's value. A patient the database does not know is created
//   from the names and birthday of its lines; a known one must carry its
//   stored last and first names (compared without regard to case).
// - check() reads the whole file and the database and finds every error
//   before anything is written; write() then writes in one transaction, so an
//   import either is written whole or changes nothing, and analyzes the
//   tables it wrote to for the query planner.
//
// The file is read as a stream: memory grows with the readings it holds
// (32 bytes each), not with the size of the file.
//
// The check reads the database before the writing transaction begins, so
// that a long check does not hold the write lock. Should another program add
// one of the file's new patients in between, the write fails on the unique
// ID and changes nothing.
class SuiteResultImport
{
public:
    // Errors listed at most; reading stops at the next one.
    static constexpr int MaxErrors = 20;
    // Files with more lines than this report their progress.
    static constexpr qint64 ProgressLines = 10000;

    struct Counts
    {
        qint64 patientsAdded = 0;
        qint64 visitsAdded = 0;
        qint64 readingsAdded = 0;
        qint64 readingsReplaced = 0;
        qint64 readingsUnchanged = 0;
    };

    struct Error
    {
        qint64 line;
        QString column; // empty when the line as a whole is wrong
        QString reason;

        QString text() const;
    };

    explicit SuiteResultImport(SuiteDatabase& db);
    ~SuiteResultImport();
    SuiteResultImport(const SuiteResultImport&) = delete;
    SuiteResultImport& operator=(const SuiteResultImport&) = delete;

    // Receives a line of progress now and then while a large file is checked and written.
    void setProgress(std::function<void(const QString&)> progress) { m_progress = std::move(progress); }

    // Reads and checks the file (size in bytes, for the progress; 0 when
    // unknown). True when it can be written; otherwise errors() says why,
    // in the order of the lines.
    bool check(QIODevice& file, qint64 size = 0);
    // Writes what check() found, in one transaction; RuntimeError when the
    // database refuses, and nothing is written then.
    void write();

    const Counts& counts() const { return m_counts; }
    const std::vector<Error>& errors() const { return m_errors; }
    // More errors than MaxErrors were found (the rest were not looked for).
    bool tooManyErrors() const { return qint64(m_errors.size()) > MaxErrors; }
    bool changesSomething() const;
    // "N patients, M visits and K readings added, J readings replaced"
    QString summary() const;

private:
    enum Column
    {
        PatientID,
        LastName,
        FirstName,
        MiddleName,
        Birthday,
        VisitDate,
        Tab,
        Table,
        Variable,
        Value,
        ColumnCount
    };

    struct Patient;
    struct Visit;
    struct Reading;
    struct Catalogue;

    // The header's line: empty lines before it are skipped.
    bool readHeader(const QStringList& fields, qint64 line);
    void checkRecord(const QStringList& fields, qint64 line);
    int patientOf(const QString& id, const QStringList& fields, qint64 line);
    void checkNames(int patient, const QStringList& fields, qint64 line);
    quint32 visitOf(int patient, const QDate& date, qint16 tab);
    void findDuplicates();
    void compareWithStored();
    void loadCatalogue();

    void addError(qint64 line, int column, const QString& reason);
    bool stopped() const { return tooManyErrors(); }
    void report(const QString& text);
    static QString columnName(int column);

    SuiteDatabase& m_db;
    std::function<void(const QString&)> m_progress;
    int m_columns[ColumnCount];
    qsizetype m_fieldCount = 0;
    std::vector<Error> m_errors;
    Counts m_counts;
    bool m_checked = false;
    bool m_showProgress = false;

    std::unique_ptr<Catalogue> m_catalogue;
    std::vector<Patient> m_patients;
    QHash<QString, int> m_patientIndex;
    std::vector<Visit> m_visits;
    QHash<quint64, quint32> m_visitIndex;
    QHash<quint64, qint32> m_storedVisits; // (patient, day, tab) -> visit_id of known patients
    std::vector<Reading> m_readings;
};
