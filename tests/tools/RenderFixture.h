#pragma once

#include "common/ScopedRegistryFile.h"
#include "components/ReportInfo.h"

#include <QImage>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <memory>

// The batch renderer's tests run the real programs, as a site would: a
// throwaway demo database made by "NorrixDBQuery auto" in a temporary folder,
// named by a key file of its own (NORRIX_REGISTRY, for the tools started and
// for the components the tests create themselves), and calvex-qc-render
// started on it. The suite's components are registered in the test process,
// so a test can ask the store for the figures a report should show.
class RenderFixture
{
public:
    struct Result
    {
        int exitCode = -1;
        QString out;
        QString err;
    };

    // Creates and fills the demo database; fails the test loudly when it cannot.
    RenderFixture();
    ~RenderFixture();
    RenderFixture(const RenderFixture&) = delete;
    RenderFixture& operator=(const RenderFixture&) = delete;

    ScopedRegistryFile& registry() { return *m_registry; }
    // A path in the test's own temporary folder.
    QString path(const QString& name) const;

    // Runs calvex-qc-render with arguments; waits up to a minute.
    Result render(const QStringList& arguments) const;
    // The same in exactly the environment given (nothing of the test's own).
    Result render(const QStringList& arguments, const QProcessEnvironment& environment) const;
    // Runs a program of the build (bin folder) or of the system.
    static Result run(const QString& program, const QStringList& arguments);
    static Result run(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment);
    static QString buildProgram(const QString& name);

    // The request the program makes for a saved definition, read from the
    // store here (the tests' own reading, to compare the renderer's with).
    static ReportInfo storedRequest(qint16 tab, const QString& report, const QString& subjectId,
                                    const QString& subjectName, const QString& from, const QString& to, bool siUnits);
    // Saves a definition of the given variables under name; returns its ID.
    static qint32 saveDefinition(const QString& name, qint16 tab, const QList<ReportVariable>& variables);

    // The text of each page of a PDF (pdftotext -layout).
    static QStringList pdfPages(const QString& pdfFile);
    // The fonts of a PDF (pdffonts), one a line: name, type, encoding and
    // whether it is embedded, a subset and has a Unicode map; without the
    // object numbers, which differ between files of the same fonts.
    static QStringList pdfFonts(const QString& pdfFile);
    // One page of a PDF as a picture (pdftoppm), in grey levels.
    static QImage rasterPage(const QString& pdfFile, int page, int dotsPerInch);

private:
    std::unique_ptr<ScopedRegistryFile> m_registry;
    QString m_runtimeDir;
    QByteArray m_previousRuntimeDir;
};
