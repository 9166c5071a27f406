#pragma once

class SuiteDatabase;

// A transaction for a scope: begun on construction, rolled back on leaving
// the scope unless commit() was called (so an exception undoes the writes).
class SuiteTransaction
{
public:
    explicit SuiteTransaction(SuiteDatabase& db);
    ~SuiteTransaction();
    SuiteTransaction(const SuiteTransaction&) = delete;
    SuiteTransaction& operator=(const SuiteTransaction&) = delete;

    void commit();

private:
    SuiteDatabase& m_db;
    bool m_open = true;
};
