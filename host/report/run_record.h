#pragma once

// The record of one run: what ran, when, where, on what, and the facts of
// every evidence file it read. Written as report/run.json and shown on the
// report's front page; read back when the report is made again later.

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include "evidence_files.h"
#include "log_findings.h"

struct run_record
{
    QString tool_version;
    QString tool_commit;
    QDateTime started;  // UTC
    QDateTime ended;
    QString host_name;
    QStringList command_line;
    QString source_root;
    QString os_scheme;
    QStringList users;
    QStringList tables;
    int engine = 0;
    QString result_database;
    bool cancelled = false;
    QList<evidence_files::file_facts> evidence;
    QList<evidence_files::looked_for> looked_for;
    QList<log_findings::finding> findings;
    // Set when the report was made again from an existing result.
    QDateTime report_made;
    QStringList report_command_line;

    // The version of this build and this machine's name.
    static run_record for_this_build();

    QJsonObject to_json() const;
    static run_record from_json(const QJsonObject& json);
};
