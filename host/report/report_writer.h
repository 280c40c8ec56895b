#pragma once

// Writes the examiner's report beside a result: report/index.html (the run
// record, what was found per account, what was looked for and not found, the
// evidence files read), a page per non-empty table, the timeline, the
// pictures found, report/csv/<table>.csv, report/timeline.csv and
// report/run.json. The page set works offline from the file system.

#include <QString>
#include <QStringList>

#include "run_record.h"

struct report_request
{
    QString out_dir;  // the host directory: Artifacts_Result/ lies below it
    run_record run;
    // The plug-in's debug log of the run, read from a byte offset on.
    QString debug_log;
    qint64 debug_log_offset = 0;
};

// The report folder of a host directory.
QString report_folder(const QString& out_dir);

// Writes (or replaces) the report; false with the reason when it could not
// be written whole. The evidence is only read.
bool write_report(const report_request& request, QString* index_path, QString* problem);
