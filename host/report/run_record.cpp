#include "run_record.h"

#include <QJsonArray>
#include <QSysInfo>

#include "build_version.h"
#include "report_values.h"

namespace {

QJsonArray strings(const QStringList& list)
{
    return QJsonArray::fromStringList(list);
}

QStringList strings(const QJsonValue& value)
{
    QStringList list;
    for (const QJsonValue& item : value.toArray())
        list << item.toString();
    return list;
}

QDateTime moment(const QJsonValue& value)
{
    return QDateTime::fromString(value.toString(), Qt::ISODate);
}

QString text_of(const QDateTime& when)
{
    return report_values::iso_utc(when);
}

}  // namespace

run_record run_record::for_this_build()
{
    run_record record;
    record.tool_version = QStringLiteral(VLC_ARTIFACTS_VERSION);
    record.tool_commit = QStringLiteral(VLC_ARTIFACTS_COMMIT);
    record.host_name = QSysInfo::machineHostName();
    return record;
}

QJsonObject run_record::to_json() const
{
    QJsonArray evidence_json;
    for (const auto& file : evidence) {
        QJsonObject item{{"path", file.path}};
        if (file.size >= 0)
            item.insert("size", file.size);
        if (!file.modified_utc.isEmpty())
            item.insert("modified_utc", file.modified_utc);
        if (!file.md5.isEmpty()) {
            item.insert("md5", file.md5);
            item.insert("sha256", file.sha256);
        }
        if (!file.note.isEmpty())
            item.insert("note", file.note);
        evidence_json.append(item);
    }
    QJsonArray looked_json;
    for (const auto& place : looked_for)
        looked_json.append(
            QJsonObject{{"user", place.user}, {"what", place.what}, {"path", place.path}, {"status", place.status}});
    QJsonArray findings_json;
    for (const auto& f : findings)
        findings_json.append(QJsonObject{{"user", f.user},
                                         {"kind", f.kind},
                                         {"what", f.what},
                                         {"path", f.path},
                                         {"detail", f.detail},
                                         {"log_message", f.message}});
    QJsonObject json{
        {"tool", QJsonObject{{"name", "vlc-artifacts"}, {"version", tool_version}, {"commit", tool_commit}}},
        {"started_utc", text_of(started)},
        {"ended_utc", text_of(ended)},
        {"host", host_name},
        {"command_line", strings(command_line)},
        {"source_root", source_root},
        {"os_scheme", os_scheme},
        {"users", strings(users)},
        {"tables", strings(tables)},
        {"engine", engine},
        {"result_database", result_database},
        {"cancelled", cancelled},
        {"evidence_files", evidence_json},
        {"looked_for", looked_json},
        {"not_found_left_out", findings_json},
    };
    if (report_made.isValid()) {
        json.insert("report_made_utc", text_of(report_made));
        json.insert("report_command_line", strings(report_command_line));
    }
    return json;
}

run_record run_record::from_json(const QJsonObject& json)
{
    run_record record;
    const QJsonObject tool = json.value("tool").toObject();
    record.tool_version = tool.value("version").toString();
    record.tool_commit = tool.value("commit").toString();
    record.started = moment(json.value("started_utc"));
    record.ended = moment(json.value("ended_utc"));
    record.host_name = json.value("host").toString();
    record.command_line = strings(json.value("command_line"));
    record.source_root = json.value("source_root").toString();
    record.os_scheme = json.value("os_scheme").toString();
    record.users = strings(json.value("users"));
    record.tables = strings(json.value("tables"));
    record.engine = json.value("engine").toInt();
    record.result_database = json.value("result_database").toString();
    record.cancelled = json.value("cancelled").toBool();
    for (const QJsonValue& value : json.value("evidence_files").toArray()) {
        const QJsonObject item = value.toObject();
        evidence_files::file_facts file;
        file.path = item.value("path").toString();
        file.size = qint64(item.value("size").toDouble(-1));
        file.modified_utc = item.value("modified_utc").toString();
        file.md5 = item.value("md5").toString();
        file.sha256 = item.value("sha256").toString();
        file.note = item.value("note").toString();
        record.evidence << file;
    }
    for (const QJsonValue& value : json.value("looked_for").toArray()) {
        const QJsonObject item = value.toObject();
        record.looked_for.append({item.value("user").toString(), item.value("what").toString(),
                                  item.value("path").toString(), item.value("status").toString()});
    }
    for (const QJsonValue& value : json.value("not_found_left_out").toArray()) {
        const QJsonObject item = value.toObject();
        record.findings.append({item.value("user").toString(), item.value("kind").toString(),
                                item.value("what").toString(), item.value("path").toString(),
                                item.value("detail").toString(), item.value("log_message").toString()});
    }
    record.report_made = moment(json.value("report_made_utc"));
    record.report_command_line = strings(json.value("report_command_line"));
    return record;
}
