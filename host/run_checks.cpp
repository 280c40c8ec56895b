#include "run_checks.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include "entry_names.h"
#include "source_layout.h"

namespace run_checks {

namespace {

// The path with every link of its existing part resolved; the part that does
// not exist yet is added as written.
QString resolved(const QString& path)
{
    QStringList parts = QFileInfo(path).absoluteFilePath().split('/', Qt::SkipEmptyParts);
    QStringList missing;
    while (!parts.isEmpty()) {
        const QString canonical = QFileInfo("/" + parts.join('/')).canonicalFilePath();
        if (!canonical.isEmpty())
            return QDir::cleanPath(canonical + "/" + missing.join('/'));
        missing.prepend(parts.takeLast());
    }
    return QDir::cleanPath("/" + missing.join('/'));
}

bool lies_inside(const QString& path, const QString& root)
{
    const QString canonical_root = QFileInfo(root).canonicalFilePath();
    const QString target = resolved(path);
    return canonical_root == "/" || target == canonical_root || target.startsWith(canonical_root + "/");
}

// Why a folder cannot be made: the nearest part of its path that exists is
// not a folder, or cannot be written.
QString why_not_made(const QString& folder)
{
    QFileInfo at(folder);
    while (!at.exists() && at.absoluteFilePath() != at.absolutePath())
        at = QFileInfo(at.absolutePath());
    if (!at.isDir())
        return at.absoluteFilePath() + " is not a folder";
    return at.absoluteFilePath() + " cannot be written";
}

}  // namespace

refusal check_output(const run_arguments& arguments)
{
    const session_options& s = arguments.session;
    if (lies_inside(s.out_dir, s.source_root))
        return {exit_code::usage, "the output folder " + s.out_dir + " lies inside the source " + s.source_root
                                      + "; the evidence is never written to: choose --out elsewhere"};
    if (!s.debug_log.isEmpty() && lies_inside(s.debug_log, s.source_root))
        return {exit_code::usage, "the debug log " + s.debug_log + " lies inside the source " + s.source_root
                                      + "; the evidence is never written to"};
    if (s.clear && arguments.append)
        return {exit_code::usage, "--clear and --append exclude each other"};
    const QString database = plugin_session::result_database_path(s.out_dir);
    if (QFileInfo::exists(database) && !s.clear && !arguments.append)
        return {exit_code::usage, database + " already holds results: pass --clear to empty the selected tables "
                                             "first, or --append to add to them"};

    if (!QDir().mkpath(s.out_dir))
        return {exit_code::failed, "cannot create the output folder " + s.out_dir + " (" + why_not_made(s.out_dir)
                                       + "); no result database was written"};
    QTemporaryFile probe(QDir(s.out_dir).filePath("write-test-XXXXXX"));
    if (!probe.open())
        return {exit_code::failed, "cannot write into the output folder " + s.out_dir + " (" + probe.errorString()
                                       + "); no result database was written"};
    if (!s.debug_log.isEmpty()) {
        QFile log(s.debug_log);
        if (!log.open(QIODevice::Append))
            return {exit_code::failed, "cannot write the debug log " + s.debug_log + ": " + log.errorString()};
    }
    return {};
}

survey survey_source(const run_arguments& arguments)
{
    const session_options& s = arguments.session;
    survey found;
    const bool accounts = s.os_scheme == "macOS" || s.os_scheme == "winOS";
    if (accounts) {
        for (const QString& name : entry_names::undecodable(QDir(s.source_root).filePath("Users")))
            found.warnings << "the account folder Users/" + name
                                  + " has a name that is not valid UTF-8 and cannot be scanned";
    }
    if (static_cast<unsigned int>(s.engine) > 2) {
        found.nothing_to_extract = QString("the plug-in extracts nothing for engine code %1; it extracts for 0, 1 "
                                           "and 2")
                                       .arg(s.engine);
        return found;
    }
    if (!arguments.os_auto && !source_layout::looks_like(s.source_root, s.os_scheme)) {
        const QString suggested = source_layout::detect_os_scheme(s.source_root);
        const QString instead = suggested.isEmpty() ? QString(", nor of another system this program knows")
                                                    : "; it looks like " + suggested + " (--os " + suggested + ")";
        found.nothing_to_extract = "the source's layout is not that of " + s.os_scheme + instead;
        return found;
    }
    if (!accounts)
        return found;
    QStringList missing;
    for (const QString& user : s.users) {
        if (!source_layout::has_account_folder(s.source_root, user))
            missing << user;
    }
    for (const QString& user : missing)
        found.warnings << "there is no profile folder Users/" + user + " on the source; --user " + user
                              + " finds nothing";
    if (s.users.isEmpty())
        found.nothing_to_extract = "there is no account folder under Users/ on the source";
    else if (missing.size() == s.users.size())
        found.nothing_to_extract = "none of the accounts given with --user has a profile folder on the source";
    return found;
}

}  // namespace run_checks
