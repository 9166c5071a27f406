#include "suite/SuiteCatalogue.h"

#include "suite/SuiteDatabase.h"

namespace
{
// Pressures: 1 cmH2O = 0.0981 kPa, 1 mmHg = 0.1333 kPa. Transfer factor:
// 1 mL/min/mmHg = 0.3348 mmol/min/kPa. Volumes and flows are in litres in
// both systems.
constexpr double kCmH2O = 0.0981;
constexpr double kMmHg = 0.1333;
constexpr double kTransfer = 0.3348;
} // namespace

const QList<SuiteCatalogue::Table>& SuiteCatalogue::tables()
{
    static const QList<Table> all{
        {0, QStringLiteral("Pre")},       {0, QStringLiteral("Post")},     {0, QStringLiteral("Challenge")},
        {0, QStringLiteral("Predicted")}, {1, QStringLiteral("Rest")},     {1, QStringLiteral("Anaerobic Threshold")},
        {1, QStringLiteral("Peak")},      {1, QStringLiteral("Recovery")},
    };
    return all;
}

const QList<SuiteCatalogue::Variable>& SuiteCatalogue::variables()
{
    static const QList<Variable> all{
        // Spirometry
        {0, QStringLiteral("FVC"), QStringLiteral("L"), QStringLiteral("L"), 1, 0, 2},
        {0, QStringLiteral("FEV1"), QStringLiteral("L"), QStringLiteral("L"), 1, 0, 2},
        {0, QStringLiteral("FEV1/FVC"), QStringLiteral("%"), QStringLiteral("%"), 1, 0, 0},
        {0, QStringLiteral("PEF"), QStringLiteral("L/s"), QStringLiteral("L/s"), 1, 0, 2},
        {0, QStringLiteral("FEF25-75"), QStringLiteral("L/s"), QStringLiteral("L/s"), 1, 0, 2},
        {0, QStringLiteral("FET"), QStringLiteral("s"), QStringLiteral("s"), 1, 0, 1},
        {0, QStringLiteral("SVC"), QStringLiteral("L"), QStringLiteral("L"), 1, 0, 2},
        {0, QStringLiteral("IC"), QStringLiteral("L"), QStringLiteral("L"), 1, 0, 2},
        {0, QStringLiteral("ERV"), QStringLiteral("L"), QStringLiteral("L"), 1, 0, 2},
        // Lung volumes and plethysmography
        {0, QStringLiteral("TLC"), QStringLiteral("L"), QStringLiteral("L"), 1, 0, 2},
        {0, QStringLiteral("RV"), QStringLiteral("L"), QStringLiteral("L"), 1, 0, 2},
        {0, QStringLiteral("FRC"), QStringLiteral("L"), QStringLiteral("L"), 1, 0, 2},
        {0, QStringLiteral("RV/TLC"), QStringLiteral("%"), QStringLiteral("%"), 1, 0, 0},
        {0, QStringLiteral("TGV"), QStringLiteral("L"), QStringLiteral("L"), 1, 0, 2},
        {0, QStringLiteral("Raw"), QStringLiteral("cmH2O/L/s"), QStringLiteral("kPa/L/s"), kCmH2O, 0, 2},
        {0, QStringLiteral("sGaw"), QStringLiteral("1/cmH2O/s"), QStringLiteral("1/kPa/s"), 1 / kCmH2O, 0, 2},
        {0, QStringLiteral("MIP"), QStringLiteral("cmH2O"), QStringLiteral("kPa"), kCmH2O, 0, 1},
        // Diffusing capacity
        {0, QStringLiteral("DLCO"), QStringLiteral("mL/min/mmHg"), QStringLiteral("mmol/min/kPa"), kTransfer, 0, 1},
        {0, QStringLiteral("VA"), QStringLiteral("L"), QStringLiteral("L"), 1, 0, 2},
        {0, QStringLiteral("KCO"), QStringLiteral("mL/min/mmHg/L"), QStringLiteral("mmol/min/kPa/L"), kTransfer, 0, 2},
        {0, QStringLiteral("Hb"), QStringLiteral("g/dL"), QStringLiteral("g/L"), 10, 0, 1},
        // Gas exchange
        {1, QStringLiteral("VO2"), QStringLiteral("mL/min"), QStringLiteral("mL/min"), 1, 0, 0},
        {1, QStringLiteral("VO2/kg"), QStringLiteral("mL/kg/min"), QStringLiteral("mL/kg/min"), 1, 0, 1},
        {1, QStringLiteral("VCO2"), QStringLiteral("mL/min"), QStringLiteral("mL/min"), 1, 0, 0},
        {1, QStringLiteral("RER"), QString(), QString(), 1, 0, 2},
        {1, QStringLiteral("VE"), QStringLiteral("L/min"), QStringLiteral("L/min"), 1, 0, 1},
        {1, QStringLiteral("VT"), QStringLiteral("L"), QStringLiteral("L"), 1, 0, 2},
        {1, QStringLiteral("RR"), QStringLiteral("/min"), QStringLiteral("/min"), 1, 0, 0},
        {1, QStringLiteral("HR"), QStringLiteral("bpm"), QStringLiteral("bpm"), 1, 0, 0},
        {1, QStringLiteral("O2 Pulse"), QStringLiteral("mL/beat"), QStringLiteral("mL/beat"), 1, 0, 1},
        {1, QStringLiteral("Work Rate"), QStringLiteral("W"), QStringLiteral("W"), 1, 0, 0},
        {1, QStringLiteral("PetCO2"), QStringLiteral("mmHg"), QStringLiteral("kPa"), kMmHg, 0, 1},
        {1, QStringLiteral("PetO2"), QStringLiteral("mmHg"), QStringLiteral("kPa"), kMmHg, 0, 1},
        {1, QStringLiteral("VE/VCO2"), QString(), QString(), 1, 0, 1},
        {1, QStringLiteral("SpO2"), QStringLiteral("%"), QStringLiteral("%"), 1, 0, 0},
        {1, QStringLiteral("SBP"), QStringLiteral("mmHg"), QStringLiteral("kPa"), kMmHg, 0, 1},
        {1, QStringLiteral("DBP"), QStringLiteral("mmHg"), QStringLiteral("kPa"), kMmHg, 0, 1},
        // Degrees Fahrenheit to Celsius: (F - 32) * 5/9.
        {1, QStringLiteral("Room Temperature"), QStringLiteral("°F"), QStringLiteral("°C"), 5.0 / 9.0, -160.0 / 9.0, 1},
    };
    return all;
}

void SuiteCatalogue::install(SuiteDatabase& db)
{
    std::vector<QVariantList> tableRows;
    qint32 order = 0;
    for (const Table& table : tables())
        tableRows.push_back({table.tab, table.name, ++order});
    db.insertRows(QStringLiteral("test_tables"),
                  {QStringLiteral("tab"), QStringLiteral("name"), QStringLiteral("sort_order")}, tableRows);

    std::vector<QVariantList> variableRows;
    order = 0;
    for (const Variable& v : variables())
        variableRows.push_back({v.tab, v.name, v.unit, v.siUnit, v.siFactor, v.siOffset, v.decimalPlaces, ++order});
    db.insertRows(QStringLiteral("variables"),
                  {QStringLiteral("tab"), QStringLiteral("name"), QStringLiteral("unit"), QStringLiteral("si_unit"),
                   QStringLiteral("si_factor"), QStringLiteral("si_offset"), QStringLiteral("decimal_places"),
                   QStringLiteral("sort_order")},
                  variableRows);
}
