#include "LabDataGenerator.h"

#include "components/ReportInfo.h"
#include "suite/DemoRandom.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteCatalogue.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteText.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr size_t kBatch = 50000;

const QStringList kSyllables{
    QStringLiteral("bar"), QStringLiteral("ton"), QStringLiteral("mel"), QStringLiteral("ric"), QStringLiteral("son"),
    QStringLiteral("dal"), QStringLiteral("ver"), QStringLiteral("lin"), QStringLiteral("hap"), QStringLiteral("mor"),
    QStringLiteral("gan"), QStringLiteral("tes"), QStringLiteral("cor"), QStringLiteral("wel"), QStringLiteral("fin"),
    QStringLiteral("nor"), QStringLiteral("ash"), QStringLiteral("bel"), QStringLiteral("kin"), QStringLiteral("rod"),
    QStringLiteral("sal"), QStringLiteral("mer"), QStringLiteral("ven"), QStringLiteral("tru")};

const QStringList kFirstNames{
    QStringLiteral("Anna"),  QStringLiteral("Ben"),    QStringLiteral("Clara"), QStringLiteral("David"),
    QStringLiteral("Emma"),  QStringLiteral("Felix"),  QStringLiteral("Grace"), QStringLiteral("Henry"),
    QStringLiteral("Ines"),  QStringLiteral("Jonas"),  QStringLiteral("Karin"), QStringLiteral("Leon"),
    QStringLiteral("Maria"), QStringLiteral("Nils"),   QStringLiteral("Olga"),  QStringLiteral("Paul"),
    QStringLiteral("Rosa"),  QStringLiteral("Samuel"), QStringLiteral("Tara"),  QStringLiteral("Umar"),
    QStringLiteral("Vera"),  QStringLiteral("Walter"), QStringLiteral("Yara"),  QStringLiteral("Zoe")};

const QStringList kPatientColumns{QStringLiteral("patient_id"), QStringLiteral("id_num"),
                                  QStringLiteral("id_key"),     QStringLiteral("last_name"),
                                  QStringLiteral("last_key"),   QStringLiteral("first_name"),
                                  QStringLiteral("first_key"),  QStringLiteral("mid_name"),
                                  QStringLiteral("mid_key"),    QStringLiteral("birthday")};
const QStringList kVisitColumns{QStringLiteral("visit_id"), QStringLiteral("patient_id"), QStringLiteral("visit_date"),
                                QStringLiteral("tab")};
const QStringList kResultColumns{QStringLiteral("visit_id"), QStringLiteral("table_id"), QStringLiteral("var_id"),
                                 QStringLiteral("result_value")};

const QStringList kSpirometry{QStringLiteral("FVC"), QStringLiteral("FEV1"),     QStringLiteral("FEV1/FVC"),
                              QStringLiteral("PEF"), QStringLiteral("FEF25-75"), QStringLiteral("SVC"),
                              QStringLiteral("TLC"), QStringLiteral("DLCO"),     QStringLiteral("KCO")};
const QStringList kExercise{QStringLiteral("VO2"),      QStringLiteral("VO2/kg"),    QStringLiteral("VCO2"),
                            QStringLiteral("RER"),      QStringLiteral("VE"),        QStringLiteral("HR"),
                            QStringLiteral("O2 Pulse"), QStringLiteral("Work Rate"), QStringLiteral("SpO2")};

struct Visit
{
    qint32 day;     // days after FirstDay
    qint32 patient; // patient_id
    qint16 tab;
    bool qc;
};

struct Variable
{
    qint32 id;
    double typical; // a plausible value in the conventional unit
};

// A plausible size for the n-th variable of a tab: values of a few units to a
// few thousand, so that every column of the table has its own width.
double typicalValue(int n)
{
    static const double kScales[] = {4.2, 3.4, 81,  8.9, 3.6,  7.1, 4.3, 3.2, 1.9, 6.4, 1.8,
                                     3.1, 29,  3.3, 1.4, 0.22, 95,  28,  5.9, 4.9, 14.2};
    return kScales[n % int(std::size(kScales))] * (1 + n / int(std::size(kScales)));
}

QVariant nameOrNull(const QString& name)
{
    return name.isEmpty() ? QVariant() : QVariant(name);
}

QVariant keyOrNull(const QString& name)
{
    return name.isEmpty() ? QVariant() : QVariant(SuiteText::searchKey(name));
}

// Collects rows of one table and hands them to the sink in batches.
class Batches
{
public:
    Batches(const LabDataGenerator::Sink& sink, QString table, const QStringList& columns)
        : m_sink(sink)
        , m_table(std::move(table))
        , m_columns(columns)
    {
        m_rows.reserve(kBatch);
    }

    void add(QVariantList row)
    {
        m_rows.push_back(std::move(row));
        ++m_count;
        if (m_rows.size() == kBatch)
            flush();
    }

    qint64 flush()
    {
        if (!m_rows.empty())
            m_sink(m_table, m_columns, m_rows);
        m_rows.clear();
        return m_count;
    }

private:
    const LabDataGenerator::Sink& m_sink;
    QString m_table;
    const QStringList& m_columns;
    std::vector<QVariantList> m_rows;
    qint64 m_count = 0;
};
} // namespace

LabDataGenerator::LabDataGenerator(int otherPatients, quint64 seed)
    : m_otherPatients(otherPatients)
    , m_seed(seed)
{}

QString LabDataGenerator::lastNameOf(int patientNumber) const
{
    // The same draw as in generate(): three syllables per patient from a
    // source of the patient's own.
    DemoRandom random(m_seed ^ (quint64(patientNumber) * 0x9E3779B97F4A7C15ULL));
    QString name;
    for (int i = 0; i < 3; ++i)
        name += kSyllables.at(random.below(int(kSyllables.size())));
    name[0] = name.at(0).toUpper();
    return name;
}

LabDataGenerator::Counts LabDataGenerator::generate(SuiteDatabase& db, const Sink& sink)
{
    SuiteDataLoader loader(db);
    const qint32 pre = loader.tableId(0, QStringLiteral("Pre"));
    const qint32 rest = loader.tableId(1, QStringLiteral("Rest"));
    std::vector<Variable> pfVariables;
    std::vector<Variable> gxVariables;
    for (const SuiteCatalogue::Variable& v : SuiteCatalogue::variables())
    {
        std::vector<Variable>& list = v.tab == 0 ? pfVariables : gxVariables;
        list.push_back({loader.variableId(v.tab, v.name), typicalValue(int(list.size()))});
    }

    Counts counts;
    DemoRandom random(m_seed);
    std::vector<Visit> visits;
    visits.reserve(size_t(QcSubjects * QcVisitsEach + m_otherPatients * 2));
    {
        Batches patients(sink, QStringLiteral("patients"), kPatientColumns);
        qint32 patientId = 0;
        for (int s = 1; s <= QcSubjects; ++s)
        {
            const QString id = QStringLiteral("QC%1").arg(s, 3, 10, QLatin1Char('0'));
            const QString first = kFirstNames.at((s - 1) % kFirstNames.size());
            patients.add({++patientId, id, SuiteText::searchKey(id), QStringLiteral("Control"),
                          QStringLiteral("control"), first, SuiteText::searchKey(first), QVariant(), QVariant(),
                          QDate(1970 + s, 1 + s % 12, 1 + s)});
            for (int week = 0; week < QcVisitsEach; ++week)
                visits.push_back({week * 7 + (s - 1) % 5, patientId, 0, true});
        }
        const int days = int(FirstDay.daysTo(LastDay)) + 1;
        for (int p = 1; p <= m_otherPatients; ++p)
        {
            const QString id = QStringLiteral("P%1").arg(p, 6, 10, QLatin1Char('0'));
            const QString last = lastNameOf(p);
            const QString first = kFirstNames.at(random.below(int(kFirstNames.size())));
            const QString mid = random.uniform() < 0.4 ? QString(QChar(u'A' + random.below(26))) : QString();
            const QDate birthday = QDate(1930, 1, 1).addDays(random.below(80 * 365));
            patients.add({++patientId, id, SuiteText::searchKey(id), last, SuiteText::searchKey(last), first,
                          SuiteText::searchKey(first), nameOrNull(mid), keyOrNull(mid), birthday});
            const int visitCount = random.uniform() < 0.5 ? 1 : 2;
            for (int v = 0; v < visitCount; ++v)
                visits.push_back({random.below(days), patientId, qint16(random.uniform() < 0.7 ? 0 : 1), false});
        }
        counts.patients = patients.flush();
    }

    // Numbered by day, as the visits were entered.
    std::sort(visits.begin(), visits.end(),
              [](const Visit& a, const Visit& b) { return a.day != b.day ? a.day < b.day : a.patient < b.patient; });
    {
        Batches visitRows(sink, QStringLiteral("visits"), kVisitColumns);
        for (size_t i = 0; i < visits.size(); ++i)
            visitRows.add({qint32(i + 1), visits[i].patient, FirstDay.addDays(visits[i].day), visits[i].tab});
        counts.visits = visitRows.flush();
    }

    Batches results(sink, QStringLiteral("results"), kResultColumns);
    std::vector<int> order;
    for (size_t i = 0; i < visits.size(); ++i)
    {
        const Visit& visit = visits[i];
        const qint32 visitId = qint32(i + 1);
        const std::vector<Variable>& variables = visit.tab == 0 ? pfVariables : gxVariables;
        const qint32 table = visit.tab == 0 ? pre : rest;
        // A QC subject reads every variable within a few per cent of its own
        // level; another patient 10 to 18 of them (at most all), anywhere in a wide
        // range.
        const int readings = visit.qc ? int(variables.size()) : std::min(int(variables.size()), 10 + random.below(9));
        order.resize(variables.size());
        for (size_t v = 0; v < variables.size(); ++v)
            order[v] = int(v);
        if (!visit.qc)
        {
            for (int k = 0; k < readings; ++k)
                std::swap(order[size_t(k)], order[size_t(k + random.below(int(variables.size()) - k))]);
            std::sort(order.begin(), order.begin() + readings);
        }
        const double spread = visit.qc ? 0.03 : 0.25;
        const double level = visit.qc ? 1 + 0.01 * (visit.patient % 7) : 1;
        for (int k = 0; k < readings; ++k)
        {
            const Variable& variable = variables[size_t(order[size_t(k)])];
            const double value = variable.typical * level * (1 + spread * random.normal());
            results.add({visitId, table, variable.id, std::round(std::max(0.0, value) * 1000) / 1000});
        }
    }
    counts.results = results.flush();
    return counts;
}

void LabDataGenerator::saveDefinitions(SuiteDatabase& db)
{
    SuiteDataLoader loader(db);
    NorrixReportStore store(db.settings());
    for (const qint16 tab : {qint16(0), qint16(1)})
    {
        ReportInfo info;
        info.TestTab = tab;
        const QString table = tab == 0 ? QStringLiteral("Pre") : QStringLiteral("Rest");
        for (const QString& name : tab == 0 ? kSpirometry : kExercise)
        {
            ReportVariable variable;
            variable.TableID = loader.tableId(tab, table);
            variable.TableName = table;
            variable.ParamsDefID = loader.variableId(tab, name);
            variable.VarName = name;
            variable.ShowInGraph = true;
            variable.ShowInTable = true;
            variable.DecimalPlaces = 2;
            info.Variables.append(variable);
        }
        store.SaveReport(tab == 0 ? QStringLiteral("Lab Spirometry") : QStringLiteral("Lab Exercise"), info);
    }
}
