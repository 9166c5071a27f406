#include "RenderFixture.h"

#include "components/QCReportStore.h"
#include "components/UniqueVarNames.h"
#include "platform/modResource.h"
#include "suite/SuiteComponents.h"
#include "suite/SuiteDatabase.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace
{
constexpr int kTimeoutMs = 60000;
} // namespace

RenderFixture::RenderFixture()
{
    m_registry = std::make_unique<ScopedRegistryFile>();
    m_registry->useDemoDatabase(path(QStringLiteral("norrix-demo.sqlite")));

    // Qt programs want a private runtime folder; without one they say so on stderr.
    m_previousRuntimeDir = qgetenv("XDG_RUNTIME_DIR");
    m_runtimeDir = path(QStringLiteral("runtime"));
    QDir().mkpath(m_runtimeDir);
    QFile::setPermissions(m_runtimeDir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtimeDir));

    const Result setup = run(buildProgram(QStringLiteral("NorrixDBQuery")), {QStringLiteral("auto")});
    if (setup.exitCode != 0)
        qFatal("NorrixDBQuery auto failed (%d): %s", setup.exitCode, qPrintable(setup.err));

    RegisterSuiteComponents();
    ResetResourceServer();
}

RenderFixture::~RenderFixture()
{
    SuiteDatabase::closeAllConnections();
    ResetResourceServer();
    qputenv("XDG_RUNTIME_DIR", m_previousRuntimeDir);
}

QString RenderFixture::path(const QString& name) const
{
    return QDir(m_registry->folder()).filePath(name);
}

RenderFixture::Result RenderFixture::render(const QStringList& arguments) const
{
    return run(buildProgram(QStringLiteral("calvex-qc-render")), arguments);
}

RenderFixture::Result RenderFixture::render(const QStringList& arguments, const QProcessEnvironment& environment) const
{
    return run(buildProgram(QStringLiteral("calvex-qc-render")), arguments, environment);
}

RenderFixture::Result RenderFixture::run(const QString& program, const QStringList& arguments)
{
    return run(program, arguments, QProcessEnvironment::systemEnvironment());
}

RenderFixture::Result RenderFixture::run(const QString& program, const QStringList& arguments,
                                         const QProcessEnvironment& environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    Result result;
    if (!process.waitForStarted(kTimeoutMs))
    {
        result.err = QStringLiteral("cannot start ") + program + QStringLiteral(": ") + process.errorString();
        return result;
    }
    if (!process.waitForFinished(kTimeoutMs))
    {
        process.kill();
        process.waitForFinished();
        result.err = program + QStringLiteral(" did not finish in time");
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    result.err = QString::fromLocal8Bit(process.readAllStandardError());
    return result;
}

QString RenderFixture::buildProgram(const QString& name)
{
    const QString folder = qEnvironmentVariable("CALVEX_BIN_DIR", QCoreApplication::applicationDirPath());
    return QDir(folder).filePath(name);
}

ReportInfo RenderFixture::storedRequest(qint16 tab, const QString& report, const QString& subjectId,
                                        const QString& subjectName, const QString& from, const QString& to,
                                        bool siUnits)
{
    ReportInfo info;
    info.TestTab = tab;
    info.PatientID = subjectId;
    info.PatientName = subjectName;
    info.FromDate = from;
    info.ToDate = to;

    const std::unique_ptr<QCReportStore> store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
    const RecordsetPtr reports = store->ListReports();
    qint32 id = -1;
    for (; !reports->IsEOF() && id < 0; reports->MoveNext())
    {
        if (reports->Value(QStringLiteral("QCReportName")).toString() == report &&
            reports->Value(QStringLiteral("QCReportType")).toInt() == tab)
            id = reports->Value(QStringLiteral("QCReportID")).toInt();
    }
    if (id < 0)
        qFatal("The demo database has no definition %s", qPrintable(report));
    qint32 storedTab = 0;
    const RecordsetPtr rows = store->OpenReport(id, siUnits, storedTab);
    UniqueVarNames names;
    for (; !rows->IsEOF(); rows->MoveNext())
    {
        ReportVariable variable;
        variable.TableID = rows->Value(QStringLiteral("QCTableID")).toInt();
        variable.ParamsDefID = rows->Value(QStringLiteral("ParamsDefID")).toInt();
        variable.TableName = rows->Value(QStringLiteral("QCUserName")).toString();
        variable.VarName = names.MakeUnique(rows->Value(QStringLiteral("ParamsUserName")).toString());
        variable.Unit = rows->Value(QStringLiteral("ParamsUnit")).toString();
        variable.ShowInGraph = rows->Value(QStringLiteral("ShowInGraph")).toBool();
        variable.ShowInTable = rows->Value(QStringLiteral("ShowInTable")).toBool();
        variable.DecimalPlaces = rows->Value(QStringLiteral("Decimal")).toInt();
        info.Variables.append(variable);
    }
    return info;
}

qint32 RenderFixture::saveDefinition(const QString& name, qint16 tab, const QList<ReportVariable>& variables)
{
    ReportInfo info;
    info.TestTab = tab;
    info.Variables = variables;
    return ComponentFactory::create<QCReportStore>(QCReportStore::ClassId)->SaveReport(name, info);
}

QStringList RenderFixture::pdfPages(const QString& pdfFile)
{
    const Result text = run(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), pdfFile, QStringLiteral("-")});
    if (text.exitCode != 0)
        qFatal("pdftotext (poppler-utils) failed on %s: %s", qPrintable(pdfFile), qPrintable(text.err));
    // Pages end with a form feed.
    QStringList pages = text.out.split(QLatin1Char('\f'));
    if (!pages.isEmpty() && pages.last().trimmed().isEmpty())
        pages.removeLast();
    return pages;
}

QStringList RenderFixture::pdfFonts(const QString& pdfFile)
{
    const Result listed = run(QStringLiteral("pdffonts"), {pdfFile});
    if (listed.exitCode != 0)
        qFatal("pdffonts (poppler-utils) failed on %s: %s", qPrintable(pdfFile), qPrintable(listed.err));
    // Two heading lines, then one line a font ending in its object number and generation.
    QStringList fonts;
    const QStringList lines = listed.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (qsizetype i = 2; i < lines.size(); ++i)
        fonts.append(lines.at(i).simplified().section(QLatin1Char(' '), 0, -3));
    return fonts;
}

QImage RenderFixture::rasterPage(const QString& pdfFile, int page, int dotsPerInch)
{
    QTemporaryDir dir;
    const QString prefix = dir.filePath(QStringLiteral("page"));
    const Result raster =
        run(QStringLiteral("pdftoppm"),
            {QStringLiteral("-r"), QString::number(dotsPerInch), QStringLiteral("-f"), QString::number(page),
             QStringLiteral("-l"), QString::number(page), QStringLiteral("-gray"), QStringLiteral("-png"),
             QStringLiteral("-singlefile"), pdfFile, prefix});
    if (raster.exitCode != 0)
        qFatal("pdftoppm (poppler-utils) failed on %s: %s", qPrintable(pdfFile), qPrintable(raster.err));
    return QImage(prefix + QStringLiteral(".png")).convertToFormat(QImage::Format_Grayscale8);
}
