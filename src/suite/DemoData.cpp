#include "suite/DemoData.h"

#include "components/CalcEngine.h"
#include "platform/RuntimeError.h"
#include "suite/DemoRandom.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteCatalogue.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSchema.h"
#include "suite/SuiteTransaction.h"
#include "suite/SuiteUser.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace
{
constexpr qint16 kPF = 0;
constexpr qint16 kGX = 1;

using Values = std::map<QString, double>;

// A variable's level in a healthy adult of average size (conventional unit)
// and its within-subject CV; sized levels scale with the subject's size.
struct Level
{
    QString name;
    double mean;
    double cv;
    bool sized;
};

struct Subject
{
    QString idNum;
    QString firstName;
    QString midName;
    QDate birthday;
    double size;   // lung and exercise capacity against the average adult
    double weight; // kg, for VO2/kg
    double hb;     // g/dL
    QDate firstPf;
    QDate firstGx;
};

// A reading the demo spoils on purpose: missing (no row), stored as zero, or
// an outlier (the reading times factor). An empty variable means the whole table.
struct Fault
{
    enum Kind
    {
        Missing,
        Zero,
        Outlier
    };
    int subject;
    qint16 tab;
    int visit; // 0-based index of the subject's visits of the tab
    QString table;
    QString variable;
    Kind kind;
    double factor = 1;
};

// A calibration drift: the readings rise linearly to +peak over the period
// and are right again after it.
struct Drift
{
    int subject;
    qint16 tab;
    QStringList variables;
    QDate start;
    QDate end;
    double peak;
};

const QList<Subject>& qcSubjects()
{
    static const QList<Subject> subjects{
        {QStringLiteral("QC001"), QStringLiteral("Adam"), QStringLiteral("Q"), QDate(1985, 3, 14), 1.00, 78, 14.9,
         QDate(2023, 1, 2), QDate(2023, 1, 5)},
        {QStringLiteral("QC002"), QStringLiteral("Beth"), QString(), QDate(1990, 7, 22), 0.78, 62, 13.4,
         QDate(2023, 1, 3), QDate(2023, 1, 6)},
        {QStringLiteral("QC003"), QStringLiteral("Carl"), QStringLiteral("R"), QDate(1978, 11, 5), 0.90, 84, 15.2,
         QDate(2023, 1, 4), QDate(2023, 1, 12)},
    };
    return subjects;
}

const QList<Level>& pfLevels()
{
    static const QList<Level> levels{
        {QStringLiteral("FVC"), 4.80, 0.025, true}, {QStringLiteral("FEV1"), 3.90, 0.025, true},
        {QStringLiteral("PEF"), 9.50, 0.05, true},  {QStringLiteral("FEF25-75"), 3.80, 0.06, true},
        {QStringLiteral("FET"), 8.0, 0.06, false},  {QStringLiteral("SVC"), 4.90, 0.025, true},
        {QStringLiteral("IC"), 3.30, 0.04, true},   {QStringLiteral("ERV"), 1.60, 0.05, true},
        {QStringLiteral("TLC"), 6.80, 0.03, true},  {QStringLiteral("RV"), 1.90, 0.05, true},
        {QStringLiteral("FRC"), 3.40, 0.04, true},  {QStringLiteral("TGV"), 3.50, 0.04, true},
        {QStringLiteral("Raw"), 1.60, 0.06, false}, {QStringLiteral("sGaw"), 0.20, 0.06, false},
        {QStringLiteral("MIP"), 105, 0.06, true},   {QStringLiteral("DLCO"), 30.5, 0.045, true},
        {QStringLiteral("VA"), 6.30, 0.03, true},   {QStringLiteral("Hb"), 14.8, 0.02, false},
    };
    return levels;
}

// Measured GX variables per test table; VO2/kg, RER, O2 Pulse and VE/VCO2
// are derived from them.
const QList<QPair<QString, QList<Level>>>& gxLevels()
{
    static const QList<QPair<QString, QList<Level>>> tables{
        {QStringLiteral("Rest"),
         {{QStringLiteral("VO2"), 320, 0.05, true},
          {QStringLiteral("VCO2"), 270, 0.05, true},
          {QStringLiteral("VE"), 11, 0.06, true},
          {QStringLiteral("VT"), 0.75, 0.06, true},
          {QStringLiteral("RR"), 14, 0.06, false},
          {QStringLiteral("HR"), 68, 0.05, false},
          {QStringLiteral("PetCO2"), 36, 0.04, false},
          {QStringLiteral("PetO2"), 102, 0.03, false},
          {QStringLiteral("SpO2"), 98, 0.01, false},
          {QStringLiteral("SBP"), 122, 0.05, false},
          {QStringLiteral("DBP"), 78, 0.05, false},
          {QStringLiteral("Room Temperature"), 71.6, 0.02, false}}},
        {QStringLiteral("Anaerobic Threshold"),
         {{QStringLiteral("VO2"), 1450, 0.045, true},
          {QStringLiteral("VCO2"), 1400, 0.045, true},
          {QStringLiteral("VE"), 38, 0.05, true},
          {QStringLiteral("VT"), 1.9, 0.05, true},
          {QStringLiteral("RR"), 20, 0.06, false},
          {QStringLiteral("HR"), 122, 0.04, false},
          {QStringLiteral("Work Rate"), 120, 0.03, true},
          {QStringLiteral("PetCO2"), 42, 0.04, false},
          {QStringLiteral("PetO2"), 98, 0.03, false},
          {QStringLiteral("SpO2"), 97, 0.01, false},
          {QStringLiteral("SBP"), 160, 0.05, false},
          {QStringLiteral("DBP"), 80, 0.05, false}}},
        {QStringLiteral("Peak"),
         {{QStringLiteral("VO2"), 2650, 0.04, true},
          {QStringLiteral("VCO2"), 3000, 0.045, true},
          {QStringLiteral("VE"), 95, 0.05, true},
          {QStringLiteral("VT"), 2.7, 0.05, true},
          {QStringLiteral("RR"), 35, 0.06, false},
          {QStringLiteral("HR"), 178, 0.02, false},
          {QStringLiteral("Work Rate"), 230, 0.03, true},
          {QStringLiteral("PetCO2"), 38, 0.05, false},
          {QStringLiteral("PetO2"), 112, 0.03, false},
          {QStringLiteral("SpO2"), 96, 0.01, false},
          {QStringLiteral("SBP"), 195, 0.05, false},
          {QStringLiteral("DBP"), 82, 0.05, false}}},
        {QStringLiteral("Recovery"),
         {{QStringLiteral("VO2"), 700, 0.06, true},
          {QStringLiteral("VCO2"), 900, 0.06, true},
          {QStringLiteral("VE"), 35, 0.06, true},
          {QStringLiteral("VT"), 1.4, 0.06, true},
          {QStringLiteral("RR"), 25, 0.06, false},
          {QStringLiteral("HR"), 120, 0.05, false},
          {QStringLiteral("PetCO2"), 34, 0.05, false},
          {QStringLiteral("PetO2"), 110, 0.03, false},
          {QStringLiteral("SpO2"), 98, 0.01, false},
          {QStringLiteral("SBP"), 150, 0.05, false},
          {QStringLiteral("DBP"), 76, 0.05, false}}},
    };
    return tables;
}

const QList<Fault>& faults()
{
    static const QList<Fault> all{
        {0, kPF, 20, QStringLiteral("Pre"), QStringLiteral("DLCO"), Fault::Missing},
        {0, kPF, 20, QStringLiteral("Pre"), QStringLiteral("VA"), Fault::Missing},
        {0, kPF, 20, QStringLiteral("Pre"), QStringLiteral("KCO"), Fault::Missing},
        {1, kPF, 41, QStringLiteral("Post"), QString(), Fault::Missing},
        {2, kGX, 15, QStringLiteral("Peak"), QStringLiteral("HR"), Fault::Missing},
        {2, kPF, 64, QStringLiteral("Pre"), QStringLiteral("TLC"), Fault::Missing},
        {0, kPF, 33, QStringLiteral("Pre"), QStringLiteral("PEF"), Fault::Zero},
        {1, kPF, 57, QStringLiteral("Pre"), QStringLiteral("FEV1"), Fault::Zero},
        {2, kPF, 88, QStringLiteral("Pre"), QStringLiteral("DLCO"), Fault::Zero},
        {0, kGX, 30, QStringLiteral("Peak"), QStringLiteral("VO2"), Fault::Zero},
        {0, kPF, 75, QStringLiteral("Pre"), QStringLiteral("FVC"), Fault::Outlier, 1.18},
        {0, kPF, 150, QStringLiteral("Pre"), QStringLiteral("FEV1"), Fault::Outlier, 0.82},
        {1, kPF, 101, QStringLiteral("Pre"), QStringLiteral("DLCO"), Fault::Outlier, 0.78},
        {2, kPF, 130, QStringLiteral("Pre"), QStringLiteral("TLC"), Fault::Outlier, 1.15},
        {1, kGX, 60, QStringLiteral("Peak"), QStringLiteral("VO2"), Fault::Outlier, 1.22},
        {2, kGX, 45, QStringLiteral("Rest"), QStringLiteral("HR"), Fault::Outlier, 1.35},
    };
    return all;
}

const QList<Drift>& drifts()
{
    static const QList<Drift> all{
        {0, kPF, {QStringLiteral("DLCO")}, QDate(2024, 9, 2), QDate(2024, 10, 14), 0.12},
        {1, kGX, {QStringLiteral("VO2"), QStringLiteral("VCO2")}, QDate(2025, 3, 3), QDate(2025, 4, 11), 0.09},
    };
    return all;
}

double roundTo(double value, int decimals)
{
    const double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

// A reading as the instruments report it: saturation up to 100 %, blood
// pressures in whole mmHg, everything else to the catalogue's decimals.
double asReported(const SuiteCatalogue::Variable& variable, double value)
{
    if (variable.name == QLatin1String("SpO2"))
        value = std::min(value, 100.0);
    if (variable.name == QLatin1String("SBP") || variable.name == QLatin1String("DBP"))
        return std::round(value);
    return roundTo(value, variable.decimalPlaces);
}

qint32 decimalsOf(qint16 tab, const QString& name)
{
    for (const SuiteCatalogue::Variable& variable : SuiteCatalogue::variables())
    {
        if (variable.tab == tab && variable.name == name)
            return variable.decimalPlaces;
    }
    return 2;
}

// Turns a subject's visit schedule into visits with results.
class Generator
{
public:
    Generator(SuiteDataLoader& loader, quint64 seed)
        : m_loader(loader)
        , m_random(seed)
    {}

    std::vector<SuiteDataLoader::Visit> pfVisits(int subjectIndex, const Subject& subject, const QList<QDate>& dates,
                                                 bool allTables)
    {
        std::vector<SuiteDataLoader::Visit> visits;
        for (qsizetype i = 0; i < dates.size(); ++i)
        {
            const int visit = int(i);
            const QDate date = dates.at(i);
            SuiteDataLoader::Visit v{date, kPF, {}};
            Values pre = measure(pfLevels(), subject);
            spoil(pre, subjectIndex, kPF, visit, QStringLiteral("Pre"), date, true);
            derivePf(pre);
            spoil(pre, subjectIndex, kPF, visit, QStringLiteral("Pre"), date, false);
            record(v, kPF, QStringLiteral("Pre"), pre);
            if (allTables)
            {
                Values post = bronchodilated(pre);
                spoil(post, subjectIndex, kPF, visit, QStringLiteral("Post"), date, false);
                record(v, kPF, QStringLiteral("Post"), post);
                if (visit % 4 == 0)
                    record(v, kPF, QStringLiteral("Challenge"), challenged(pre));
                record(v, kPF, QStringLiteral("Predicted"), predicted(subject));
            }
            visits.push_back(std::move(v));
        }
        return visits;
    }

    std::vector<SuiteDataLoader::Visit> gxVisits(int subjectIndex, const Subject& subject, const QList<QDate>& dates)
    {
        std::vector<SuiteDataLoader::Visit> visits;
        for (qsizetype i = 0; i < dates.size(); ++i)
        {
            const int visit = int(i);
            const QDate date = dates.at(i);
            SuiteDataLoader::Visit v{date, kGX, {}};
            for (const auto& [table, levels] : gxLevels())
            {
                Values values = measure(levels, subject);
                spoil(values, subjectIndex, kGX, visit, table, date, true);
                deriveGx(values, subject);
                spoil(values, subjectIndex, kGX, visit, table, date, false);
                record(v, kGX, table, values);
            }
            visits.push_back(std::move(v));
        }
        return visits;
    }

    DemoRandom& random() { return m_random; }

private:
    Values measure(const QList<Level>& levels, const Subject& subject)
    {
        Values values;
        for (const Level& level : levels)
        {
            double base = level.mean * (level.sized ? subject.size : 1.0);
            if (level.name == QLatin1String("Hb"))
                base = subject.hb;
            values[level.name] = base * (1.0 + level.cv * m_random.normal());
        }
        return values;
    }

    // Before the derived values: drifts and outliers (they shift the ratios
    // too). After: missing and zero readings.
    static void spoil(Values& values, int subject, qint16 tab, int visit, const QString& table, const QDate& date,
                      bool beforeDerived)
    {
        if (beforeDerived)
        {
            for (const Drift& drift : drifts())
            {
                if (drift.subject != subject || drift.tab != tab || date < drift.start || date > drift.end)
                    continue;
                const double share = double(drift.start.daysTo(date)) / double(drift.start.daysTo(drift.end));
                for (const QString& name : drift.variables)
                {
                    if (values.count(name))
                        values[name] *= 1.0 + drift.peak * share;
                }
            }
        }
        for (const Fault& fault : faults())
        {
            if (fault.subject != subject || fault.tab != tab || fault.visit != visit || fault.table != table)
                continue;
            if (beforeDerived != (fault.kind == Fault::Outlier))
                continue;
            if (fault.variable.isEmpty())
                values.clear();
            else if (fault.kind == Fault::Missing)
                values.erase(fault.variable);
            else if (fault.kind == Fault::Zero)
                values[fault.variable] = 0;
            else if (values.count(fault.variable))
                values[fault.variable] *= fault.factor;
        }
    }

    static void derivePf(Values& v)
    {
        if (v.count(QStringLiteral("FEV1")) && v.count(QStringLiteral("FVC")))
            v[QStringLiteral("FEV1/FVC")] = 100.0 * v[QStringLiteral("FEV1")] / v[QStringLiteral("FVC")];
        if (v.count(QStringLiteral("RV")) && v.count(QStringLiteral("TLC")))
            v[QStringLiteral("RV/TLC")] = 100.0 * v[QStringLiteral("RV")] / v[QStringLiteral("TLC")];
        if (v.count(QStringLiteral("DLCO")) && v.count(QStringLiteral("VA")))
            v[QStringLiteral("KCO")] = v[QStringLiteral("DLCO")] / v[QStringLiteral("VA")];
    }

    static void deriveGx(Values& v, const Subject& subject)
    {
        const double vo2 = v[QStringLiteral("VO2")];
        const double vco2 = v[QStringLiteral("VCO2")];
        v[QStringLiteral("VO2/kg")] = vo2 / subject.weight;
        v[QStringLiteral("RER")] = vco2 / vo2;
        v[QStringLiteral("O2 Pulse")] = vo2 / v[QStringLiteral("HR")];
        v[QStringLiteral("VE/VCO2")] = 1000.0 * v[QStringLiteral("VE")] / vco2;
    }

    // After a bronchodilator: flows rise more than volumes.
    Values bronchodilated(const Values& pre)
    {
        Values post;
        const QList<QPair<QString, double>> gains{{QStringLiteral("FVC"), 1.01},
                                                  {QStringLiteral("FEV1"), 1.04},
                                                  {QStringLiteral("PEF"), 1.05},
                                                  {QStringLiteral("FEF25-75"), 1.12}};
        for (const auto& [name, gain] : gains)
        {
            const auto it = pre.find(name);
            if (it != pre.end() && it->second != 0)
                post[name] = it->second * gain * (1.0 + 0.015 * m_random.normal());
        }
        derivePf(post);
        return post;
    }

    // After a mild challenge dose: a small fall of the flows.
    Values challenged(const Values& pre)
    {
        Values after;
        const QList<QPair<QString, double>> falls{
            {QStringLiteral("FVC"), 0.97}, {QStringLiteral("FEV1"), 0.93}, {QStringLiteral("PEF"), 0.92}};
        for (const auto& [name, fall] : falls)
        {
            const auto it = pre.find(name);
            if (it != pre.end() && it->second != 0)
                after[name] = it->second * fall * (1.0 + 0.02 * m_random.normal());
        }
        derivePf(after);
        return after;
    }

    static Values predicted(const Subject& subject)
    {
        Values values;
        for (const Level& level : pfLevels())
            values[level.name] = level.mean * (level.sized ? subject.size * 0.97 : 1.0);
        derivePf(values);
        return values;
    }

    void record(SuiteDataLoader::Visit& visit, qint16 tab, const QString& table, const Values& values)
    {
        const qint32 tableId = m_loader.tableId(tab, table);
        for (const SuiteCatalogue::Variable& variable : SuiteCatalogue::variables())
        {
            if (variable.tab != tab)
                continue;
            const auto it = values.find(variable.name);
            if (it == values.end())
                continue;
            visit.results.append({tableId, m_loader.variableId(tab, variable.name), asReported(variable, it->second)});
        }
    }

    SuiteDataLoader& m_loader;
    DemoRandom m_random;
};

QList<QDate> schedule(const QDate& first, int stepDays)
{
    QList<QDate> dates;
    for (QDate date = first; date <= DemoData::LastDay; date = date.addDays(stepDays))
        dates.append(date);
    return dates;
}

QList<SuiteDataLoader::Patient> otherPatients(DemoRandom& random)
{
    static const QStringList lastNames{
        QStringLiteral("Smith"),    QStringLiteral("Johnson"),   QStringLiteral("Williams"),
        QStringLiteral("Brown"),    QStringLiteral("Jones"),     QStringLiteral("Garcia"),
        QStringLiteral("Miller"),   QStringLiteral("Davis"),     QStringLiteral("Rodriguez"),
        QStringLiteral("Martinez"), QStringLiteral("Hernandez"), QStringLiteral("Lopez"),
        QStringLiteral("Wilson"),   QStringLiteral("Anderson"),  QStringLiteral("Thomas"),
        QStringLiteral("Taylor"),   QStringLiteral("Moore"),     QStringLiteral("Jackson"),
        QStringLiteral("Martin"),   QStringLiteral("Lee"),       QStringLiteral("Thompson"),
        QStringLiteral("White"),    QStringLiteral("Harris"),    QStringLiteral("Clark"),
        QStringLiteral("Lewis"),    QStringLiteral("Robinson"),  QStringLiteral("Walker"),
        QStringLiteral("Young"),    QStringLiteral("Allen"),     QStringLiteral("King"),
        QStringLiteral("Wright"),   QStringLiteral("Scott"),     QStringLiteral("Nguyen"),
        QStringLiteral("Hill"),     QStringLiteral("Green"),     QStringLiteral("Adams"),
        QStringLiteral("Baker"),    QStringLiteral("Hall"),      QStringLiteral("Campbell"),
        QStringLiteral("Mitchell"), QStringLiteral("O'Brien"),   QStringLiteral("O'Connor"),
        QStringLiteral("Müller"),   QStringLiteral("Núñez"),     QStringLiteral("Smithson"),
        QStringLiteral("Kowalski"), QStringLiteral("Johansson"), QStringLiteral("MacLeod"),
    };
    static const QStringList firstNames{
        QStringLiteral("James"),   QStringLiteral("Mary"),      QStringLiteral("Robert"),  QStringLiteral("Patricia"),
        QStringLiteral("John"),    QStringLiteral("Jennifer"),  QStringLiteral("Michael"), QStringLiteral("Linda"),
        QStringLiteral("David"),   QStringLiteral("Elizabeth"), QStringLiteral("William"), QStringLiteral("Barbara"),
        QStringLiteral("Richard"), QStringLiteral("Susan"),     QStringLiteral("Joseph"),  QStringLiteral("Jessica"),
        QStringLiteral("Thomas"),  QStringLiteral("Sarah"),     QStringLiteral("Charles"), QStringLiteral("Karen"),
        QStringLiteral("Daniel"),  QStringLiteral("Nancy"),     QStringLiteral("Matthew"), QStringLiteral("Lisa"),
        QStringLiteral("Anthony"), QStringLiteral("Margaret"),  QStringLiteral("Mark"),    QStringLiteral("Sandra"),
        QStringLiteral("Paul"),    QStringLiteral("Ashley"),    QStringLiteral("Steven"),  QStringLiteral("Emily"),
        QStringLiteral("Seán"),    QStringLiteral("Zoë"),
    };
    static const QStringList middleNames{
        QStringLiteral("A"),     QStringLiteral("B"),   QStringLiteral("C"),     QStringLiteral("D"),
        QStringLiteral("E"),     QStringLiteral("J"),   QStringLiteral("L"),     QStringLiteral("M"),
        QStringLiteral("Ann"),   QStringLiteral("Lee"), QStringLiteral("Marie"), QStringLiteral("Lynn"),
        QStringLiteral("James"), QStringLiteral("Ray"), QStringLiteral("Grace"), QStringLiteral("Paul"),
    };
    QList<SuiteDataLoader::Patient> patients;
    for (int i = 1; i <= DemoData::OtherPatients; ++i)
    {
        SuiteDataLoader::Patient patient;
        patient.idNum = QStringLiteral("P%1").arg(i, 5, 10, QLatin1Char('0'));
        patient.lastName = lastNames.at(random.below(int(lastNames.size())));
        patient.firstName = firstNames.at(random.below(int(firstNames.size())));
        if (random.uniform() < 0.6)
            patient.midName = middleNames.at(random.below(int(middleNames.size())));
        patient.birthday = QDate(1940, 1, 1).addDays(random.below(65 * 365));
        patients.append(patient);
    }
    // One record with nothing but a last name.
    patients.append({QStringLiteral("P%1").arg(DemoData::OtherPatients + 1, 5, 10, QLatin1Char('0')),
                     QStringLiteral("Nakamura"), QString(), QString(), QDate()});
    return patients;
}

// One variable of a saved definition.
struct DefinitionItem
{
    QString table;
    QString variable;
    bool inGraph;
    bool inTable;
};

ReportInfo definition(SuiteDataLoader& loader, qint16 tab, const QList<DefinitionItem>& items)
{
    ReportInfo info;
    info.TestTab = tab;
    for (const DefinitionItem& item : items)
    {
        ReportVariable variable;
        variable.TableID = loader.tableId(tab, item.table);
        variable.TableName = item.table;
        variable.ParamsDefID = loader.variableId(tab, item.variable);
        variable.VarName = item.variable;
        variable.ShowInGraph = item.inGraph;
        variable.ShowInTable = item.inTable;
        variable.DecimalPlaces = decimalsOf(tab, item.variable);
        info.Variables.append(variable);
    }
    return info;
}

void saveDefinitions(SuiteDatabase& db, SuiteDataLoader& loader)
{
    const QString pre = QStringLiteral("Pre");
    const QString post = QStringLiteral("Post");
    const QString peak = QStringLiteral("Peak");
    const QString at = QStringLiteral("Anaerobic Threshold");
    const QString rest = QStringLiteral("Rest");
    const auto both = [](const QString& table, const char* name) {
        return DefinitionItem{table, QString::fromUtf8(name), true, true};
    };
    const auto tableOnly = [](const QString& table, const char* name) {
        return DefinitionItem{table, QString::fromUtf8(name), false, true};
    };
    const QList<QPair<QString, ReportInfo>> definitions{
        {QStringLiteral("Spirometry"), definition(loader, kPF,
                                                  {both(pre, "FVC"), both(pre, "FEV1"), both(pre, "FEV1/FVC"),
                                                   both(pre, "PEF"), both(pre, "FEF25-75")})},
        {QStringLiteral("Lung Volumes"),
         definition(loader, kPF,
                    {both(pre, "TLC"), both(pre, "RV"), both(pre, "FRC"), both(pre, "SVC"), both(pre, "RV/TLC")})},
        {QStringLiteral("DLCO"),
         definition(loader, kPF, {both(pre, "DLCO"), both(pre, "VA"), both(pre, "KCO"), tableOnly(pre, "Hb")})},
        {QStringLiteral("Plethysmography"),
         definition(loader, kPF, {both(pre, "TGV"), both(pre, "Raw"), both(pre, "sGaw"), both(pre, "TLC")})},
        {QStringLiteral("Volume QC"), definition(loader, kPF,
                                                 {both(pre, "FVC"), both(post, "FVC"), both(pre, "FEV1"),
                                                  both(post, "FEV1"), both(pre, "SVC"), both(pre, "TLC")})},
        {QStringLiteral("Exercise Peak"), definition(loader, kGX,
                                                     {both(peak, "VO2"), both(peak, "VO2/kg"), both(peak, "HR"),
                                                      both(peak, "VE"), both(peak, "RER"), both(peak, "Work Rate")})},
        {QStringLiteral("Anaerobic Threshold"),
         definition(loader, kGX,
                    {both(at, "VO2"), both(at, "HR"), both(at, "VE/VCO2"), both(at, "PetCO2"), both(at, "Work Rate")})},
        {QStringLiteral("Resting"),
         definition(loader, kGX,
                    {both(rest, "VO2"), both(rest, "HR"), both(rest, "SBP"), both(rest, "DBP"), both(rest, "SpO2"),
                     tableOnly(rest, "Room Temperature")})},
    };
    // The store's own save, joining this transaction on the same connection.
    const QString savedBy = SuiteUser::signedInName(db);
    for (const auto& [name, info] : definitions)
        NorrixReportStore::storeDefinition(db, name, info, savedBy);
}

void requireCurrentSchema(SuiteDatabase& db)
{
    if (SuiteSchema::version(db) != SuiteSchema::CurrentVersion)
        throw RuntimeError(SuiteDatabase::ErrorQueryFailed, SuiteDatabase::ErrorSource,
                           QStringLiteral("The demo data need a database with the current schema."));
}
} // namespace

void DemoData::fill(SuiteDatabase& db, quint64 seed)
{
    requireCurrentSchema(db);
    if (db.scalar(QStringLiteral("SELECT COUNT(*) FROM patients")).toInt() > 0)
        throw RuntimeError(SuiteDatabase::ErrorQueryFailed, SuiteDatabase::ErrorSource,
                           QStringLiteral("The database holds patients already; the demo data go only into an "
                                          "empty database."));
    SuiteTransaction transaction(db);
    SuiteDataLoader loader(db);
    Generator generator(loader, seed);

    loader.addUser(QStringLiteral("labmanager"), QStringLiteral("Lab Manager"),
                   {CalcEngine::RightRunReports, CalcEngine::RightEditReports}, 30, false);
    loader.addUser(QStringLiteral("labtech"), QStringLiteral("Lab Technician"), {CalcEngine::RightRunReports}, 15,
                   false);
    loader.addUser(QStringLiteral("formerstaff"), QStringLiteral("Former Staff Member"),
                   {CalcEngine::RightRunReports, CalcEngine::RightEditReports}, 30, true);

    const QList<Subject>& subjects = qcSubjects();
    for (qsizetype i = 0; i < subjects.size(); ++i)
    {
        const Subject& subject = subjects.at(i);
        const qint32 key = loader.addPatient(
            {subject.idNum, QStringLiteral("Control"), subject.firstName, subject.midName, subject.birthday});
        loader.addVisits(key, generator.pfVisits(int(i), subject, schedule(subject.firstPf, 7), true));
        loader.addVisits(key, generator.gxVisits(int(i), subject, schedule(subject.firstGx, 14)));
    }
    loader.addPatients(otherPatients(generator.random()));
    saveDefinitions(db, loader);
    transaction.commit();
}

void DemoData::addLongSeries(SuiteDatabase& db, const QString& idNum, int visitCount, quint64 seed)
{
    requireCurrentSchema(db);
    SuiteTransaction transaction(db);
    SuiteDataLoader loader(db);
    Generator generator(loader, seed);
    Subject subject = qcSubjects().first();
    subject.idNum = idNum;
    subject.firstName = QStringLiteral("Long");
    subject.midName.clear();
    QList<QDate> dates;
    for (int i = visitCount - 1; i >= 0; --i)
        dates.append(LastDay.addDays(-i));
    const qint32 key =
        loader.addPatient({idNum, QStringLiteral("Control"), subject.firstName, QString(), subject.birthday});
    // Subject index -1: none of the demo's deliberate faults apply.
    loader.addVisits(key, generator.pfVisits(-1, subject, dates, false));
    transaction.commit();
}
