#pragma once

// What the host program checks before a scan, so that the examiner learns at
// once, not after hours of work, that the run would write into the evidence,
// cannot write where asked, or can extract nothing.

#include <QString>
#include <QStringList>

#include "command_line.h"

namespace run_checks {

struct refusal
{
    int exit_code = exit_code::ok;
    QString text;  // one line for stderr
};

// The output folder and the debug log are the run's only writes: neither may
// lie inside the source (links followed); a folder that holds a result
// database is used again only with --clear or --append; the folder is made
// and written to, and the log opened, before the scan starts.
refusal check_output(const run_arguments& arguments);

// What the examiner should know before the scan (folders the run cannot
// reach), and, when the run can extract nothing at all, why.
struct survey
{
    QStringList warnings;
    QString nothing_to_extract;
};
survey survey_source(const run_arguments& arguments);

}  // namespace run_checks
