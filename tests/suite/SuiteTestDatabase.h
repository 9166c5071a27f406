#pragma once

#include "common/ScopedRegistryFile.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSettings.h"

#include <QVariant>

#include <memory>

// A fresh, empty database for one test, and a temporary key file that points
// the suite at it (NORRIX_REGISTRY, put back afterwards), so that components
// created through their default constructors use it too.
//
// Normally the database is a new SQLite file in a temporary folder. When the
// key file named by NORRIX_REGISTRY at the first use names a PostgreSQL
// database whose name starts with "calvex_test" (tests/suite/run-postgres.sh
// starts such a server), every test gets that database instead, emptied
// first. Tests never touch any other database. One exists at a time.
class SuiteTestDatabase
{
public:
    SuiteTestDatabase();
    ~SuiteTestDatabase();
    SuiteTestDatabase(const SuiteTestDatabase&) = delete;
    SuiteTestDatabase& operator=(const SuiteTestDatabase&) = delete;

    static bool onPostgres();

    // Sets a value of the suite's key (text, or a number as a dword) and
    // rewrites the key file; an invalid QVariant removes it.
    void setValue(const QString& name, const QVariant& value) { m_registry.setValue(name, value); }
    SuiteSettings settings() const { return SuiteSettings::fromRegistry(); }
    QString tempPath(const QString& fileName) const;

    // The test database, created when needed.
    SuiteDatabase& db();
    void createSchema();
    // The current schema and the demo data.
    void fillDemo();

    // On the test server: a login role of that name (made when the server
    // has none), with the privileges the README grants for those rights (500:
    // reading the tables and writing the audit log; 501: changing report
    // definitions) on the tables there are now, and no others.
    void grantServerRights(const QString& login, const QList<qint32>& rights);
    // A second connection to the test database, as another workstation has:
    // on the server another login with both rights, on SQLite the same file
    // named through a link to its folder.
    SuiteSettings secondWorkstation();

private:
    static QMap<QString, QVariant> claimDatabase();

    ScopedRegistryFile m_registry;
    std::unique_ptr<SuiteDatabase> m_db;
};
