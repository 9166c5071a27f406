#include "suite/SuiteTransaction.h"

#include "platform/RuntimeError.h"
#include "suite/SuiteDatabase.h"

SuiteTransaction::SuiteTransaction(SuiteDatabase& db)
    : m_db(db)
{
    m_db.begin();
}

SuiteTransaction::~SuiteTransaction()
{
    if (!m_open)
        return;
    try
    {
        m_db.rollback();
    }
    catch (const RuntimeError&)
    {
        // The connection is gone; the server drops the transaction with it.
    }
}

void SuiteTransaction::commit()
{
    m_open = false;
    m_db.commit();
}
