// The helper object: working copies of evidence files (databases with their
// write-ahead companions, single files) and the classification of file names
// as image, audio or video by extension.

#include <QDir>
#include <QFile>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QUuid>
#include <QtTest>

#include "plugin_helper_functions.h"
#include "plugin_static_function.h"
#include "test_support.h"

namespace {

// The three lists, each entry once, as the product classifies them.
const QStringList k_image_extensions = {
    ".001", ".2bp", ".36", ".411", ".73i", ".8pbs", ".8xi", ".abm", ".accountpicture-ms", ".acorn", ".acr", ".adc",
    ".afx", ".agif", ".agp", ".aic", ".ais", ".albm", ".apd", ".apm", ".apng", ".aps", ".apx", ".arr", ".art",
    ".artwork", ".arw", ".asw", ".avatar", ".awd", ".abc", ".ac5", ".ac6", ".af2", ".af3", ".ai", ".artb", ".asy",
    ".awg", ".blkrt", ".blz", ".bm2", ".bmc", ".bmf", ".bmp", ".bmx", ".bmz", ".brk", ".brn", ".brt", ".bss",
    ".bti", ".cag", ".ccx", ".cdd", ".cdmm", ".cdmt", ".cdmtz", ".cdmz", ".cdr", ".cdt", ".cdx", ".cgm", ".cil",
    ".clarify", ".cmx", ".cnv", ".cor", ".csy", ".cv5", ".cvg", ".cvi", ".cvs", ".cvx", ".cxf", ".c4", ".cal",
    ".cals", ".cam", ".can", ".cd5", ".cdc", ".cdg", ".ce", ".cimg", ".cin", ".cit", ".colz", ".cpbitmap", ".cpc",
    ".cpd", ".cpg", ".cps", ".cpt", ".cpx", ".csf", ".ct", ".cut", ".dcs", ".ddrw", ".ded", ".design", ".dhs",
    ".dia", ".dpp", ".dpr", ".dpx", ".drawing", ".drawit", ".drw", ".dsf", ".dxb", ".dc2", ".dcm", ".dcx", ".ddb",
    ".dds", ".ddt", ".dgt", ".dib", ".dicom", ".djv", ".djvu", ".dm3", ".dmi", ".drz", ".dt2", ".dtw", ".dvl",
    ".ecw", ".epp", ".exr", ".emf", ".emz", ".ep", ".eps", ".epsf", ".ezdraw", ".fac", ".face", ".fal", ".fax",
    ".fbm", ".fil", ".fits", ".fpg", ".fpos", ".fpx", ".frm", ".fh10", ".fh11", ".fh7", ".fh8", ".fh9", ".fhd",
    ".fif", ".fig", ".fmv", ".fs", ".ft10", ".ft11", ".ft7", ".ft8", ".ft9", ".ftn", ".fxg", ".g3", ".gbr", ".gcdp",
    ".gfb", ".gfie", ".ggr", ".gif", ".gih", ".gim", ".gmbck", ".gmspr", ".gp4", ".gpd", ".gro", ".grob", ".gry",
    ".gdraw", ".gem", ".gks", ".glox", ".gls", ".graffle", ".gsd", ".gstencil", ".gtemplate", ".hdp", ".hdr",
    ".hdrp", ".hf", ".hpi", ".hr", ".hrf", ".hgl", ".hpg", ".hpgl", ".hpl", ".i3d", ".ic1", ".ic2", ".ic3", ".ica",
    ".icb", ".icn", ".icon", ".icpr", ".ilbm", ".img", ".imj", ".info", ".ink", ".int", ".ipick", ".ipx", ".itc2",
    ".ithmb", ".ivr", ".ivue", ".iwi", ".idea", ".igt", ".igx", ".imd", ".j", ".j2c", ".j2k", ".jas", ".jb2",
    ".jbf", ".jbig", ".jbig2", ".jbmp", ".jbr", ".jfi", ".jfif", ".jia", ".jif", ".jiff", ".jng", ".jp2", ".jpc",
    ".jpd", ".jpe", ".jpeg", ".jpf", ".jpg", ".jpg2", ".jps", ".jpx", ".jtf", ".jwl", ".jxr", ".kdi", ".kdk",
    ".kfx", ".kic", ".kodak", ".kpg", ".lbm", ".lif", ".ljp", ".lmk", ".mac", ".mat", ".max", ".mbm", ".mcs",
    ".met", ".mic", ".mip", ".mix", ".mng", ".mnr", ".mpf", ".mpo", ".mrb", ".mrxs", ".msk", ".msp", ".mxi", ".myl",
    ".mgc", ".mgcb", ".mgmf", ".mgmt", ".mgmx", ".mgs", ".mgtx", ".mmat", ".mp", ".ncd", ".ncr", ".nct", ".neo",
    ".nlm", ".nap", ".oc3", ".oc4", ".oc5", ".oci", ".odi", ".omf", ".oplc", ".ora", ".ota", ".otb", ".oti", ".odg",
    ".otg", ".ovp", ".ovr", ".pac", ".pal", ".pap", ".pat", ".pbm", ".pc1", ".pc2", ".pc3", ".pcd", ".pcx", ".pdd",
    ".pdn", ".pe4", ".pfi", ".pfr", ".pgf", ".pgm", ".pi1", ".pi2", ".pi3", ".pi4", ".pi5", ".pi6", ".pic",
    ".picnc", ".pict", ".pictclipping", ".pix", ".pixadex", ".pjpeg", ".pjpg", ".pm", ".pm3", ".pmg", ".png",
    ".pni", ".pnm", ".pns", ".pnt", ".pntg", ".pop", ".pov", ".pp4", ".pp5", ".ppf", ".ppm", ".prw", ".psb", ".psd",
    ".psdx", ".pse", ".psf", ".psp", ".pspbrush", ".pspimage", ".ptg", ".ptk", ".ptx", ".pvr", ".pwp", ".px",
    ".pxd", ".pxicon", ".pxm", ".pxr", ".pzp", ".pcs", ".pd", ".pen", ".pfd", ".pl", ".plt", ".pobj", ".ps",
    ".psid", ".pws", ".qif", ".qmg", ".qti", ".qtif", ".ras", ".rcl", ".rcu", ".rgb", ".ric", ".rif", ".riff",
    ".rix", ".rle", ".rli", ".rpf", ".rri", ".rs", ".rsb", ".rsr", ".rdl", ".s2mv", ".sai", ".sar", ".sbp", ".scg",
    ".sci", ".scn", ".scp", ".sct", ".scu", ".sdr", ".sep", ".sfc", ".sff", ".sfw", ".sgi", ".shg", ".sid", ".sig",
    ".sim", ".skitch", ".skm", ".skypeemoticonset", ".sld", ".smp", ".sob", ".spa", ".spc", ".spe", ".sph",
    ".spiff", ".spj", ".spp", ".spr", ".sprite", ".spu", ".sr", ".ste", ".sumo", ".sun", ".suniff", ".sup", ".sva",
    ".scv", ".sda", ".sk1", ".sk2", ".sketch", ".slddrt", ".smf", ".std", ".svf", ".svg", ".svgz", ".sxd", ".t2b",
    ".taac", ".tb0", ".tbn", ".tex", ".tfc", ".tg4", ".tga", ".thm", ".thumb", ".tif", ".tiff", ".tjp", ".tm2",
    ".tn", ".tn1", ".tn2", ".tn3", ".tny", ".tpf", ".tpi", ".tps", ".trif", ".tub", ".tlc", ".tne", ".tpl", ".u",
    ".ufo", ".urt", ".usertile-ms", ".ufr", ".v", ".vda", ".vff", ".vic", ".viff", ".vna", ".vpe", ".vrphoto",
    ".vss", ".vst", ".vbr", ".vec", ".vml", ".vsd", ".vsdm", ".vsdx", ".vstm", ".vstx", ".wb1", ".wbc", ".wbd",
    ".wbm", ".wbmp", ".wbz", ".wdp", ".webp", ".wi", ".wic", ".wmp", ".wpb", ".wpe", ".wvl", ".wmf", ".wmz", ".wpg",
    ".xbm", ".xcf", ".xpm", ".xwd", ".xar", ".xmind", ".xmmap", ".xpr", ".y", ".ysp", ".yuv", ".yal", ".zif", ".zgm",
};

const QStringList k_audio_extensions = {
    ".2sf", ".2sflib", ".3ga", ".4mp", ".669", ".6cm", ".8cm", ".8med", ".8svx", ".a2m", ".a52", ".aa", ".aa3",
    ".aac", ".aax", ".ab", ".abc", ".abm", ".ac3", ".acd", ".acd-bak", ".acd-zip", ".acm", ".acp", ".act", ".adg",
    ".adt", ".adts", ".adv", ".afc", ".agm", ".agr", ".ahx", ".aif", ".aifc", ".aiff", ".aimppl", ".ais", ".akp",
    ".al", ".alac", ".alaw", ".alc", ".all", ".als", ".amf", ".amr", ".ams", ".amxd", ".amz", ".aob", ".ape",
    ".apf", ".apl", ".aria", ".ariax", ".asd", ".ase", ".at3", ".atrac", ".au", ".aud", ".aup", ".avastsounds",
    ".avr", ".awb", ".ay", ".b4s", ".band", ".bap", ".bcs", ".bdd", ".bidule", ".bonk", ".box", ".brstm", ".bun",
    ".bwf", ".bwg", ".bww", ".c01", ".caf", ".caff", ".cda", ".cdda", ".cdlx", ".cdo", ".cdr", ".cel", ".cfa",
    ".cfxr", ".cgrp", ".cidb", ".ckb", ".ckf", ".cmf", ".conform", ".copy", ".cpr", ".cpt", ".csh", ".cts", ".cwb",
    ".cwp", ".d00", ".d01", ".dcf", ".dcm", ".dct", ".ddt", ".dewf", ".df2", ".dfc", ".dff", ".dig", ".djr", ".dls",
    ".dm", ".dmc", ".dmf", ".dmsa", ".dmse", ".dra", ".drg", ".ds", ".ds2", ".dsf", ".dsm", ".dsp", ".dss", ".dtm",
    ".dts", ".dtshd", ".dvf", ".dwa", ".dwd", ".ear", ".efa", ".efe", ".efk", ".efq", ".efs", ".efv", ".emd",
    ".emp", ".emx", ".emy", ".esps", ".evr", ".expressionmap", ".f2r", ".f32", ".f3r", ".f4a", ".f64", ".far",
    ".fda", ".fdp", ".fev", ".fff", ".flac", ".flp", ".fls", ".frg", ".fsb", ".fsm", ".ftm", ".fzb", ".fzf", ".fzv",
    ".g721", ".g723", ".g726", ".gbproj", ".gbs", ".gig", ".gio", ".gm", ".gp5", ".gpbank", ".gpk", ".gpx", ".gro",
    ".groove", ".gsm", ".h0", ".hdp", ".hma", ".hmi", ".hsb", ".iaa", ".ics", ".iff", ".igp", ".igr", ".imf",
    ".imp", ".ins", ".isma", ".it", ".iti", ".itls", ".its", ".jam", ".jo", ".jo-7z", ".k25", ".k26", ".kar",
    ".kfn", ".kin", ".kit", ".kmp", ".koz", ".kpl", ".krz", ".ksc", ".ksf", ".ksm", ".kt2", ".kt3", ".ktp", ".l",
    ".la", ".lof", ".logic", ".lqt", ".lso", ".lvp", ".lwv", ".m1a", ".m3u", ".m3u8", ".m4a", ".m4b", ".m4p",
    ".m4r", ".ma1", ".mbr", ".mdl", ".med", ".mgv", ".mid", ".midi", ".mini2sf", ".minincsf", ".miniusf", ".mka",
    ".mlp", ".mmf", ".mmm", ".mmp", ".mo3", ".mod", ".mogg", ".mp1", ".mp2", ".mp3", ".mp_", ".mpa", ".mpc",
    ".mpdp", ".mpga", ".mpu", ".mscx", ".mscz", ".msv", ".mt2", ".mt9", ".mte", ".mtf", ".mti", ".mtm", ".mtp",
    ".mts", ".mu3", ".mui", ".mus", ".musa", ".mux", ".muz", ".mws", ".mx3", ".mx4", ".mx5", ".mx5template", ".mxl",
    ".mxmf", ".myr", ".mzp", ".nap", ".nbs", ".ncw", ".nkb", ".nkc", ".nki", ".nkm", ".nks", ".nkx", ".nml",
    ".note", ".npl", ".nra", ".nrt", ".nsa", ".nsf", ".nst", ".ntn", ".nvf", ".nwc", ".obw", ".odm", ".ofr", ".oga",
    ".ogg", ".okt", ".oma", ".omf", ".omg", ".omx", ".opus", ".orc", ".ots", ".ove", ".ovw", ".pac", ".pat", ".pbf",
    ".pca", ".pcast", ".pcg", ".pcm", ".pd", ".peak", ".pek", ".pho", ".phy", ".pk", ".pkf", ".pla", ".pls",
    ".plst", ".ply", ".pna", ".pno", ".ppc", ".ppcx", ".prg", ".psf", ".psm", ".psy", ".ptf", ".ptm", ".pts",
    ".ptx", ".pvc", ".qcp", ".r", ".r1m", ".ra", ".ram", ".raw", ".rax", ".rbs", ".rcy", ".record", ".rex", ".rfl",
    ".rgrp", ".rip", ".rmf", ".rmi", ".rmj", ".rmm", ".rmx", ".rng", ".rns", ".rol", ".rsn", ".rso", ".rta", ".rti",
    ".rtm", ".rts", ".rvx", ".rx2", ".s3i", ".s3m", ".s3z", ".saf", ".sam", ".sap", ".sb", ".sbg", ".sbi", ".sbk",
    ".sc2", ".scs11", ".sd", ".sd2", ".sd2f", ".sdat", ".sdii", ".sds", ".sdt", ".sdx", ".seg", ".seq", ".ses",
    ".sesx", ".sf", ".sf2", ".sfap0", ".sfk", ".sfpack", ".sfs", ".sgp", ".shn", ".sib", ".sid", ".slp", ".slx",
    ".sma", ".smf", ".smp", ".snd", ".sng", ".sns", ".sou", ".sph", ".sppack", ".sprg", ".spx", ".sseq", ".ssnd",
    ".stap", ".stm", ".stx", ".sty", ".svd", ".svx", ".sw", ".swa", ".swav", ".sxt", ".syh", ".syn", ".syw", ".syx",
    ".tak", ".td0", ".tfmx", ".tg", ".thx", ".tm2", ".tm8", ".tmc", ".toc", ".trak", ".tsp", ".tta", ".tun", ".txw",
    ".u", ".u8", ".uax", ".ub", ".ulaw", ".ult", ".ulw", ".uni", ".usf", ".usflib", ".ust", ".uw", ".uwf", ".v2m",
    ".vag", ".val", ".vap", ".vb", ".vc3", ".vdj", ".vgm", ".vgz", ".vlc", ".vmd", ".vmf", ".vmo", ".voc", ".voi",
    ".vox", ".voxal", ".vpl", ".vpm", ".vqf", ".vrf", ".vsq", ".vtx", ".vyf", ".w01", ".w64", ".wav", ".wave",
    ".wax", ".wem", ".wfb", ".wfd", ".wfm", ".wfp", ".wma", ".wow", ".wpk", ".wpp", ".wproj", ".wrk", ".wtpl",
    ".wtpt", ".wus", ".wut", ".wv", ".wvc", ".wve", ".wwu", ".wyz", ".xa", ".xfs", ".xi", ".xm", ".xmf", ".xmi",
    ".xmz", ".xp", ".xrns", ".xsb", ".xsp", ".xspf", ".xt", ".xwb", ".ym", ".yookoo", ".zpa", ".zpl", ".zvd", ".zvr",
};

const QStringList k_video_extensions = {
    ".264", ".3g2", ".3gp", ".3gp2", ".3gpp", ".3gpp2", ".3mm", ".3p2", ".60d", ".787", ".aaf", ".aec", ".aep",
    ".aepx", ".aet", ".aetx", ".ajp", ".ale", ".am", ".amc", ".amv", ".amx", ".anim", ".aqt", ".arcut", ".arf",
    ".asf", ".asx", ".avb", ".avc", ".avd", ".avi", ".avp", ".avs", ".avv", ".axm", ".bdm", ".bdmv", ".bdt2",
    ".bdt3", ".bik", ".bin", ".bix", ".bmc", ".bmk", ".bnp", ".box", ".bs4", ".bsf", ".bvr", ".byu", ".camproj",
    ".camrec", ".camv", ".ced", ".cel", ".cine", ".cip", ".clpi", ".cmmp", ".cmmtpl", ".cmproj", ".cmrec", ".cpi",
    ".cst", ".cvc", ".cx3", ".d2v", ".d3v", ".dat", ".dav", ".dce", ".dck", ".dcr", ".ddat", ".dif", ".dir",
    ".divx", ".dlx", ".dmb", ".dmsd", ".dmsd3d", ".dmsm", ".dmsm3d", ".dmss", ".dmx", ".dnc", ".dpa", ".dpg",
    ".dream", ".dsy", ".dv", ".dv-avi", ".dv4", ".dvdmedia", ".dvr", ".dvr-ms", ".dvx", ".dxr", ".dzm", ".dzp",
    ".dzt", ".edl", ".evo", ".eye", ".ezt", ".f4f", ".f4p", ".f4v", ".fbr", ".fbz", ".fcp", ".fcproject", ".ffd",
    ".flc", ".flh", ".fli", ".flv", ".flx", ".ftc", ".gfp", ".gl", ".gom", ".grasp", ".gts", ".gvi", ".gvp",
    ".h264", ".hdmov", ".hkm", ".mov", ".mkv", ".mp4",
};

bool write_file(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return file.write(content) == content.size();
}

QByteArray read_file(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Writes an evidence database as a running player leaves it: its first row is
// in the main file, its second only in the "-wal" companion beside it.
bool write_database_with_pending_log(const QString& staging_dir, const QString& evidence_path)
{
    bool ok = true;
    const QString staged = staging_dir + "/staged.db";
    const QString name = "staging " + QUuid::createUuid().toString();
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
        db.setDatabaseName(staged);
        ok = db.open();
        QSqlQuery query(db);
        for (const char* statement :
             {"PRAGMA journal_mode=WAL", "PRAGMA wal_autocheckpoint=0", "CREATE TABLE Media (title TEXT)",
              "INSERT INTO Media VALUES ('checkpointed')", "PRAGMA wal_checkpoint(TRUNCATE)",
              "INSERT INTO Media VALUES ('only in the log')"}) {
            if (ok && !query.exec(statement))
                ok = false;
        }
        query.finish();
        // Copied while the writer is still open, so the log is not folded in.
        QDir().mkpath(QFileInfo(evidence_path).absolutePath());
        for (const QString& suffix : {QString(), QString("-wal"), QString("-shm")}) {
            if (ok && !QFile::copy(staged + suffix, evidence_path + suffix))
                ok = false;
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

bool write_plain_database(const QString& path)
{
    bool ok = true;
    const QString name = "plain " + QUuid::createUuid().toString();
    QDir().mkpath(QFileInfo(path).absolutePath());
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
        db.setDatabaseName(path);
        ok = db.open();
        QSqlQuery query(db);
        ok = ok && query.exec("CREATE TABLE Media (title TEXT)") && query.exec("INSERT INTO Media VALUES ('one')");
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

QStringList titles_in(const QString& database_path)
{
    QStringList titles;
    for (const QVariantList& row : test_support::query_rows(database_path, "SELECT title FROM Media ORDER BY rowid"))
        titles << row.value(0).toString();
    return titles;
}

}  // namespace

class test_plugin_helper_functions : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir* m_dir = nullptr;
    QString m_adhoc;
    QString m_evidence;

private slots:
    void init()
    {
        m_dir = new QTemporaryDir;
        QVERIFY(m_dir->isValid());
        m_adhoc = m_dir->filePath("results/adhoc") + "/";
        m_evidence = m_dir->filePath("evidence");
        QVERIFY(QDir().mkpath(m_dir->filePath("staging")));
        plugin_static_function::bool_cancel_extraction = false;
    }

    void cleanup()
    {
        plugin_static_function::bool_cancel_extraction = false;
        delete m_dir;
        m_dir = nullptr;
    }

    // ---- working copies ---------------------------------------------------

    void database_copies_are_numbered_and_keep_their_log()
    {
        const QString source = m_evidence + "/data/org.videolan.vlc/databases/vlc_media.db";
        QVERIFY(write_database_with_pending_log(m_dir->filePath("staging"), source));
        QVERIFY(QFileInfo::exists(source + "-wal"));
        QVERIFY(QFileInfo::exists(source + "-shm"));
        const auto evidence_before = test_support::snapshot_tree(m_evidence);

        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);
        const QStringList expected_names = {"vlc_media.db", "1_vlc_media.db", "2_vlc_media.db"};
        for (const QString& expected : expected_names) {
            const QString copy = helper.get_adhoc_path_for_database(source);
            QCOMPARE(copy, m_adhoc + expected);
            QCOMPARE(read_file(copy), read_file(source));
            QCOMPARE(read_file(copy + "-wal"), read_file(source + "-wal"));
            QCOMPARE(read_file(copy + "-shm"), read_file(source + "-shm"));
        }

        // Each copy, opened on its own, sees the row that was still in the log.
        for (const QString& name : expected_names)
            QCOMPARE(titles_in(m_adhoc + name), (QStringList{"checkpointed", "only in the log"}));

        QCOMPARE(test_support::snapshot_tree(m_evidence), evidence_before);
    }

    void database_without_companions_is_copied_alone()
    {
        const QString source = m_evidence + "/Users/ann/vlc_media.db";
        QVERIFY(write_plain_database(source));
        // Leftovers of an earlier run whose database copy is gone: a stale log
        // must not be replayed into the new copy.
        QVERIFY(write_file(m_adhoc + "vlc_media.db-wal", QByteArray(4096, '\x5a')));
        QVERIFY(write_file(m_adhoc + "vlc_media.db-shm", QByteArray(4096, '\x5a')));

        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);
        const QString copy = helper.get_adhoc_path_for_database("  " + source + " ");
        QCOMPARE(copy, m_adhoc + "vlc_media.db");
        QCOMPARE(read_file(copy), read_file(source));
        QVERIFY(!QFileInfo::exists(copy + "-wal"));
        QVERIFY(!QFileInfo::exists(copy + "-shm"));
        QCOMPARE(titles_in(copy), QStringList{"one"});
    }

    void read_only_evidence_gives_a_writable_copy()
    {
        const QString source = m_evidence + "/vlc_media.db";
        QVERIFY(write_database_with_pending_log(m_dir->filePath("staging"), source));
        const QFileDevice::Permissions read_only =
            QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
        for (const QString& suffix : {QString(), QString("-wal"), QString("-shm")})
            QVERIFY(QFile::setPermissions(source + suffix, read_only));
        const auto evidence_before = test_support::snapshot_tree(m_evidence);

        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);
        const QString copy = helper.get_adhoc_path_for_database(source);
        for (const QString& suffix : {QString(), QString("-wal"), QString("-shm")}) {
            QVERIFY(QFileInfo(copy + suffix).permissions() & QFileDevice::WriteOwner);
            // (The user bits say what this process may do; the mode bits are
            // what matters here.)
            QVERIFY(!(QFileInfo(source + suffix).permissions()
                      & (QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther)));
        }
        // The copy is worked on like any database; the evidence is not.
        QVERIFY(plugin_static_function::execute_db_command_by_dbpath("INSERT INTO Media VALUES ('added')", copy,
                                                                     "void test()"));
        QCOMPARE(titles_in(copy), (QStringList{"checkpointed", "only in the log", "added"}));
        QCOMPARE(test_support::snapshot_tree(m_evidence), evidence_before);
    }

    void regular_file_copies()
    {
        const QString source = m_evidence + "/Users/ann/Library/Preferences/org.videolan.vlc/vlcrc";
        QVERIFY(write_file(source, "[core]\nrecursive=expand\n"));
        QVERIFY(write_file(source + "-wal", "not a companion of a plain file"));

        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);
        QCOMPARE(helper.get_adhoc_path_for_regular_file(source), m_adhoc + "vlcrc");
        QCOMPARE(helper.get_adhoc_path_for_regular_file(source), m_adhoc + "1_vlcrc");
        QCOMPARE(read_file(m_adhoc + "1_vlcrc"), read_file(source));
        QVERIFY(!QFileInfo::exists(m_adhoc + "vlcrc-wal"));
        QVERIFY(!QFileInfo::exists(m_adhoc + "1_vlcrc-wal"));
    }

    void nothing_to_copy()
    {
        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);
        QCOMPARE(helper.get_adhoc_path_for_database(QString()), QString());
        QCOMPARE(helper.get_adhoc_path_for_database("   "), QString());
        QCOMPARE(helper.get_adhoc_path_for_regular_file(QString()), QString());

        // A source that is not there yields no file at the copy's path.
        const QString copy = helper.get_adhoc_path_for_database(m_evidence + "/missing.db");
        QVERIFY(!copy.isEmpty());
        QVERIFY(!QFileInfo::exists(copy));
    }

    void cancelled_copy_gives_the_folder_alone()
    {
        const QString source = m_evidence + "/vlc_media.db";
        QVERIFY(write_database_with_pending_log(m_dir->filePath("staging"), source));
        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);

        plugin_static_function::bool_cancel_extraction = true;
        QCOMPARE(helper.get_adhoc_path_for_database(source), m_adhoc);
        QCOMPARE(helper.get_adhoc_path_for_regular_file(source), m_adhoc);
        QVERIFY(QDir(m_adhoc).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty());
    }

    // ---- classification ---------------------------------------------------

    void list_sizes()
    {
        plugin_helper_functions helper;
        QCOMPARE(helper.image_extension_count(), 570);
        QCOMPARE(helper.audio_extension_count(), 571);
        QCOMPARE(helper.video_extension_count(), 136);
        QCOMPARE(helper.image_extensions().size(), 570);
        const auto distinct = [](QStringList list) {
            list.removeDuplicates();
            return list.size();
        };
        QCOMPARE(distinct(helper.image_extensions()), 548);
        QCOMPARE(distinct(helper.audio_extensions()), 545);
        QCOMPARE(distinct(helper.video_extensions()), 133);
    }

    void list_contents_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("image") << 0;
        QTest::newRow("audio") << 1;
        QTest::newRow("video") << 2;
    }

    void list_contents()
    {
        QFETCH(int, kind);
        plugin_helper_functions helper;
        const QStringList actual = kind == 0   ? helper.image_extensions()
                                   : kind == 1 ? helper.audio_extensions()
                                               : helper.video_extensions();
        const QStringList& expected = kind == 0   ? k_image_extensions
                                      : kind == 1 ? k_audio_extensions
                                                  : k_video_extensions;
        const QSet<QString> actual_set(actual.begin(), actual.end());
        const QSet<QString> expected_set(expected.begin(), expected.end());
        QCOMPARE(expected_set.size(), expected.size());
        QStringList missing = QSet<QString>(expected_set).subtract(actual_set).values();
        QStringList surplus = QSet<QString>(actual_set).subtract(expected_set).values();
        missing.sort();
        surplus.sort();
        QCOMPARE(missing, QStringList());
        QCOMPARE(surplus, QStringList());

        // Every entry is found by its own check, in any case and with blanks
        // around the name.
        for (const QString& entry : expected) {
            for (const QString& name : {"file" + entry, " /Users/ann/Downloads/FILE" + entry.toUpper() + " "}) {
                const bool found = kind == 0   ? helper.check_is_image_by_extn(name)
                                   : kind == 1 ? helper.check_is_audio_by_extn(name)
                                               : helper.check_is_video_by_extn(name);
                QVERIFY2(found, qPrintable(name));
            }
        }
    }

    void classification_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("image");
        QTest::addColumn<bool>("audio");
        QTest::addColumn<bool>("video");

        QTest::newRow("upper-case suffix") << "movie.MP4" << false << false << true;
        QTest::newRow("mixed case with blanks") << " Movie.Mp4 " << false << false << true;
        QTest::newRow("full path") << "/Users/ann/Movies/Holiday 2019.mov" << false << false << true;
        QTest::newRow("mkv") << "clip.mkv" << false << false << true;
        QTest::newRow("digit bucket") << "phone.3gp" << false << false << true;
        QTest::newRow("entry with a hyphen") << "show.dvr-ms" << false << false << true;
        QTest::newRow("ends with a dot") << "movie." << false << false << false;
        QTest::newRow("ends with two dots") << "movie.." << false << false << false;
        QTest::newRow("suffix then a dot") << "movie.mp4." << false << false << false;
        QTest::newRow("no dot") << "movie" << false << false << false;
        QTest::newRow("dot only in a folder") << "/Users/ann/music.d/track" << false << false << false;
        QTest::newRow("empty") << "" << false << false << false;
        QTest::newRow("last piece only") << "archive.tar.mp3" << false << true << true;
        QTest::newRow("earlier piece is not looked at") << "song.mp3.part" << false << false << false;
        QTest::newRow("name that is only a suffix") << ".mp3" << false << true << true;
        QTest::newRow("image") << "IMG_0001.JPG" << true << false << false;
        QTest::newRow("in two lists") << "scan.cdr" << true << true << true;
        QTest::newRow("image and video") << "clip.bmc" << true << false << true;
        QTest::newRow("underscore inside") << "track.mp_" << false << true << true;
        QTest::newRow("underscore first") << "track._mp3" << false << false << false;
        QTest::newRow("non-ASCII first") << "track.\u00e9mp3" << false << false << false;
        QTest::newRow("non-ASCII letter that lowers to ASCII") << "photo.\u212Adi" << false << false << false;
        QTest::newRow("blank first") << "track. mp3" << false << false << false;
        // Video falls back to audio, also where its own bucket is empty.
        QTest::newRow("audio counts as video") << "podcast.m4a" << false << true << true;
        QTest::newRow("empty video bucket") << "list.zpl" << false << true << true;
        QTest::newRow("in no list") << "notes.zzz" << false << false << false;
        // Deliberately not video: nothing after "m" in the video list.
        QTest::newRow("wmv") << "old.wmv" << false << false << false;
        QTest::newRow("webm") << "web.webm" << false << false << false;
        QTest::newRow("ogv") << "theora.ogv" << false << false << false;
        QTest::newRow("ogg is audio") << "theora.ogg" << false << true << true;
    }

    void classification()
    {
        QFETCH(QString, name);
        QFETCH(bool, image);
        QFETCH(bool, audio);
        QFETCH(bool, video);
        plugin_helper_functions helper;
        QCOMPARE(helper.check_is_image_by_extn(name), image);
        QCOMPARE(helper.check_is_audio_by_extn(name), audio);
        QCOMPARE(helper.check_is_video_by_extn(name), video);
    }

    void cancelled_checks_answer_false()
    {
        plugin_helper_functions helper;
        helper.set_cancel_extraction(true);
        for (const char* name : {"a.jpg", "a.mp3", "a.mp4", "a.zpl", "a.m4a"}) {
            QVERIFY(!helper.check_is_image_by_extn(name));
            QVERIFY(!helper.check_is_audio_by_extn(name));
            QVERIFY(!helper.check_is_video_by_extn(name));
        }
        helper.set_essentials();
        QVERIFY(helper.check_is_image_by_extn("a.jpg"));
        QVERIFY(helper.check_is_video_by_extn("a.mp3"));
        helper.set_cancel_extraction(false);
        QVERIFY(helper.check_is_audio_by_extn("a.mp3"));
    }
};

QTEST_GUILESS_MAIN(test_plugin_helper_functions)
#include "test_plugin_helper_functions.moc"
