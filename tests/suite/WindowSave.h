#pragma once

#include "platform/RuntimeError.h"
#include "suite/NorrixReportStore.h"

// Saves a definition as the window's Save does: the stored copy deleted and
// the grid saved anew, in one transaction. Returns the new ID.
inline qint32 SaveAsTheWindowDoes(NorrixReportStore& store, qint32 id, const QString& name, const ReportInfo& info)
{
    store.BeginTrans();
    try
    {
        store.DeleteReport(id, QString());
        const qint32 saved = store.SaveReport(name, info);
        store.CommitTrans();
        return saved;
    }
    catch (const RuntimeError&)
    {
        store.RollbackTrans();
        throw;
    }
}
