// Extension lists used to classify a file name as image, audio or video.
// Generated once from the product's classification tables; every entry keeps
// its leading dot and is lower case. A few entries are inserted twice on
// purpose (kept from the original tables; harmless for matching).

#include "media_extension_lists.h"

namespace media_extension_lists {
const char* const image_entries[] = {
    ".001", ".2bp", ".36", ".411", ".73i", ".8pbs", ".8xi", ".abm", ".accountpicture-ms",
    ".acorn", ".acr", ".adc", ".afx", ".agif", ".agp", ".aic", ".ais", ".albm", ".apd", ".apm",
    ".apng", ".aps", ".apx", ".arr", ".art", ".artwork", ".arw", ".asw", ".avatar", ".awd",
    ".abc", ".ac5", ".ac6", ".af2", ".af3", ".ai", ".artb", ".asy", ".awg", ".blkrt", ".blz",
    ".bm2", ".bmc", ".bmf", ".bmp", ".bmx", ".bmz", ".brk", ".brn", ".brt", ".bss", ".bti",
    ".cag", ".ccx", ".cdd", ".cdmm", ".cdmt", ".cdmtz", ".cdmz", ".cdr", ".cdt", ".cdx", ".cgm",
    ".cil", ".clarify", ".cmx", ".cnv", ".cor", ".csy", ".cv5", ".cvg", ".cvi", ".cvs", ".cvx",
    ".cxf", ".c4", ".cal", ".cals", ".cam", ".can", ".cd5", ".cdc", ".cdg", ".ce", ".cimg",
    ".cin", ".cit", ".colz", ".cpbitmap", ".cpc", ".cpd", ".cpg", ".cps", ".cpt", ".cpx", ".csf",
    ".ct", ".cut", ".dcs", ".ddrw", ".ded", ".design", ".dhs", ".dia", ".dpp", ".dpr", ".dpx",
    ".drawing", ".drawit", ".drw", ".dsf", ".dxb", ".dc2", ".dcm", ".dcx", ".ddb", ".dds", ".ddt",
    ".dgt", ".dib", ".dicom", ".djv", ".djvu", ".dm3", ".dmi", ".drz", ".dt2", ".dtw", ".dvl",
    ".ecw", ".epp", ".exr", ".emf", ".emz", ".ep", ".eps", ".epsf", ".ezdraw", ".fac", ".face",
    ".fal", ".fax", ".fbm", ".fil", ".fits", ".fpg", ".fpos", ".fpx", ".frm", ".fh10", ".fh11",
    ".fh7", ".fh8", ".fh9", ".fhd", ".fif", ".fig", ".fmv", ".fs", ".ft10", ".ft11", ".ft7",
    ".ft8", ".ft9", ".ftn", ".fxg", ".g3", ".gbr", ".gcdp", ".gfb", ".gfie", ".ggr", ".gif",
    ".gih", ".gim", ".gmbck", ".gmspr", ".gp4", ".gpd", ".gro", ".grob", ".gry", ".gdraw", ".gem",
    ".gks", ".glox", ".gls", ".graffle", ".gsd", ".gstencil", ".gtemplate", ".hdp", ".hdr",
    ".hdrp", ".hf", ".hpi", ".hr", ".hrf", ".hgl", ".hpg", ".hpgl", ".hpl", ".i3d", ".ic1",
    ".ic2", ".ic3", ".ica", ".icb", ".icn", ".icon", ".icpr", ".ilbm", ".img", ".imj", ".info",
    ".ink", ".int", ".ipick", ".ipx", ".itc2", ".ithmb", ".ivr", ".ivue", ".iwi", ".idea", ".igt",
    ".igx", ".imd", ".j", ".j2c", ".j2k", ".jas", ".jb2", ".jbf", ".jbig", ".jbig2", ".jbmp",
    ".jbr", ".jfi", ".jfif", ".jia", ".jif", ".jiff", ".jng", ".jp2", ".jpc", ".jpd", ".jpe",
    ".jpeg", ".jpf", ".jpg", ".jpg2", ".jps", ".jpx", ".jtf", ".jwl", ".jxr", ".kdi", ".kdk",
    ".kfx", ".kic", ".kodak", ".kpg", ".lbm", ".lif", ".ljp", ".lmk", ".mac", ".mat", ".max",
    ".mbm", ".mcs", ".met", ".mic", ".mip", ".mix", ".mng", ".mnr", ".mpf", ".mpo", ".mrb",
    ".mrxs", ".msk", ".msp", ".mxi", ".myl", ".mgc", ".mgcb", ".mgmf", ".mgmt", ".mgmx", ".mgs",
    ".mgtx", ".mmat", ".mp", ".ncd", ".ncr", ".nct", ".neo", ".nlm", ".nap", ".oc3", ".oc4",
    ".oc5", ".oci", ".odi", ".omf", ".oplc", ".ora", ".ota", ".otb", ".oti", ".odg", ".otg",
    ".ovp", ".ovr", ".pac", ".pal", ".pap", ".pat", ".pbm", ".pc1", ".pc2", ".pc3", ".pcd",
    ".pcx", ".pdd", ".pdn", ".pe4", ".pfi", ".pfr", ".pgf", ".pgm", ".pi1", ".pi2", ".pi3",
    ".pi4", ".pi5", ".pi6", ".pic", ".picnc", ".pict", ".pictclipping", ".pix", ".pixadex",
    ".pjpeg", ".pjpg", ".pm", ".pm3", ".pmg", ".png", ".pni", ".pnm", ".pns", ".pnt", ".pntg",
    ".pop", ".pov", ".pp4", ".pp5", ".ppf", ".ppm", ".prw", ".psb", ".psd", ".psdx", ".pse",
    ".psf", ".psp", ".pspbrush", ".pspimage", ".ptg", ".ptk", ".ptx", ".pvr", ".pwp", ".px",
    ".pxd", ".pxicon", ".pxm", ".pxr", ".pzp", ".pcs", ".pd", ".pen", ".pfd", ".pl", ".plt",
    ".pobj", ".ps", ".psid", ".pws", ".qif", ".qmg", ".qti", ".qtif", ".ras", ".rcl", ".rcu",
    ".rgb", ".ric", ".rif", ".riff", ".rix", ".rle", ".rli", ".rpf", ".rri", ".rs", ".rsb",
    ".rsr", ".rdl", ".s2mv", ".sai", ".sar", ".sbp", ".scg", ".sci", ".scn", ".scp", ".sct",
    ".scu", ".sdr", ".sep", ".sfc", ".sff", ".sfw", ".sgi", ".shg", ".sid", ".sig", ".sim",
    ".skitch", ".skm", ".skypeemoticonset", ".sld", ".smp", ".sob", ".spa", ".spc", ".spe",
    ".sph", ".spiff", ".spj", ".spp", ".spr", ".sprite", ".spu", ".sr", ".ste", ".sumo", ".sun",
    ".suniff", ".sup", ".sva", ".scv", ".sda", ".sk1", ".sk2", ".sketch", ".slddrt", ".smf",
    ".std", ".svf", ".svg", ".svgz", ".sxd", ".t2b", ".taac", ".tb0", ".tbn", ".tex", ".tfc",
    ".tg4", ".tga", ".thm", ".thumb", ".tif", ".tiff", ".tjp", ".tm2", ".tn", ".tn1", ".tn2",
    ".tn3", ".tny", ".tpf", ".tpi", ".tps", ".trif", ".tub", ".tlc", ".tne", ".tpl", ".u", ".ufo",
    ".urt", ".usertile-ms", ".ufr", ".v", ".vda", ".vff", ".vic", ".viff", ".vna", ".vpe",
    ".vrphoto", ".vss", ".vst", ".vbr", ".vec", ".vml", ".vsd", ".vsdm", ".vsdx", ".vstm",
    ".vstx", ".wb1", ".wbc", ".wbd", ".wbm", ".wbmp", ".wbz", ".wdp", ".webp", ".wi", ".wic",
    ".wmp", ".wpb", ".wpe", ".wvl", ".wmf", ".wmz", ".wpg", ".xbm", ".xcf", ".xpm", ".xwd",
    ".xar", ".xmind", ".xmmap", ".xpr", ".y", ".ysp", ".yuv", ".yal", ".zif", ".zgm",
};
const int image_entries_count = int(sizeof(image_entries) / sizeof(image_entries[0]));

const char* const audio_entries[] = {
    ".2sf", ".2sflib", ".3ga", ".4mp", ".669", ".6cm", ".8cm", ".8med", ".8svx", ".a2m", ".a52",
    ".aa", ".aa3", ".aac", ".aax", ".ab", ".abc", ".abm", ".ac3", ".acd", ".acd-bak", ".acd-zip",
    ".acm", ".acp", ".act", ".adg", ".adt", ".adts", ".adv", ".afc", ".agm", ".agr", ".ahx",
    ".aif", ".aifc", ".aiff", ".aimppl", ".ais", ".akp", ".al", ".alac", ".alaw", ".alc", ".all",
    ".als", ".amf", ".amr", ".ams", ".amxd", ".amz", ".aob", ".ape", ".apf", ".apl", ".aria",
    ".ariax", ".asd", ".ase", ".at3", ".atrac", ".au", ".aud", ".aup", ".avastsounds", ".avr",
    ".awb", ".ay", ".b4s", ".band", ".bap", ".bcs", ".bdd", ".bidule", ".bonk", ".box", ".brstm",
    ".bun", ".bwf", ".bwg", ".bww", ".c01", ".caf", ".caff", ".cda", ".cdda", ".cdlx", ".cdo",
    ".cdr", ".cel", ".cfa", ".cfxr", ".cgrp", ".cidb", ".ckb", ".ckf", ".cmf", ".conform",
    ".copy", ".cpr", ".cpt", ".csh", ".cts", ".cwb", ".cwp", ".d00", ".d01", ".dcf", ".dcm",
    ".dct", ".ddt", ".dewf", ".df2", ".dfc", ".dff", ".dig", ".djr", ".dls", ".dm", ".dmc",
    ".dmf", ".dmsa", ".dmse", ".dra", ".drg", ".ds", ".ds2", ".dsf", ".dsm", ".dsp", ".dss",
    ".dtm", ".dts", ".dtshd", ".dvf", ".dwa", ".dwd", ".ear", ".efa", ".efe", ".efk", ".efq",
    ".efs", ".efv", ".emd", ".emp", ".emx", ".emy", ".esps", ".evr", ".expressionmap", ".f2r",
    ".f32", ".f3r", ".f4a", ".f64", ".far", ".fda", ".fdp", ".fev", ".fff", ".flac", ".flp",
    ".fls", ".frg", ".fsb", ".fsm", ".ftm", ".fzb", ".fzf", ".fzv", ".g721", ".g723", ".g726",
    ".gbproj", ".gbs", ".gig", ".gio", ".gm", ".gp5", ".gpbank", ".gpk", ".gpx", ".gro",
    ".groove", ".gsm", ".h0", ".hdp", ".hma", ".hmi", ".hsb", ".iaa", ".ics", ".iff", ".igp",
    ".igr", ".imf", ".imp", ".ins", ".isma", ".it", ".iti", ".itls", ".its", ".jam", ".jo",
    ".jo-7z", ".k25", ".k26", ".kar", ".kfn", ".kin", ".kit", ".kmp", ".koz", ".kpl", ".krz",
    ".ksc", ".ksf", ".ksm", ".kt2", ".kt3", ".ktp", ".l", ".la", ".lof", ".logic", ".lqt", ".lso",
    ".lvp", ".lwv", ".m1a", ".m3u", ".m3u8", ".m4a", ".m4b", ".m4p", ".m4r", ".ma1", ".mbr",
    ".mdl", ".med", ".mgv", ".mid", ".midi", ".mini2sf", ".minincsf", ".miniusf", ".mka", ".mlp",
    ".mmf", ".mmm", ".mmp", ".mo3", ".mod", ".mogg", ".mp1", ".mp2", ".mp3", ".mp_", ".mpa",
    ".mpc", ".mpdp", ".mpga", ".mpu", ".mscx", ".mscz", ".msv", ".mt2", ".mt9", ".mte", ".mtf",
    ".mti", ".mtm", ".mtp", ".mts", ".mu3", ".mui", ".mus", ".musa", ".mux", ".muz", ".mws",
    ".mx3", ".mx4", ".mx5", ".mx5template", ".mxl", ".mxmf", ".myr", ".mzp", ".nap", ".nbs",
    ".ncw", ".nkb", ".nkc", ".nki", ".nkm", ".nks", ".nkx", ".nml", ".note", ".npl", ".nra",
    ".nrt", ".nsa", ".nsf", ".nst", ".ntn", ".nvf", ".nwc", ".obw", ".odm", ".ofr", ".oga",
    ".ogg", ".okt", ".oma", ".omf", ".omg", ".omx", ".opus", ".orc", ".ots", ".ove", ".ovw",
    ".pac", ".pat", ".pbf", ".pca", ".pcast", ".pcg", ".pcm", ".pd", ".peak", ".pek", ".pho",
    ".phy", ".pk", ".pkf", ".pla", ".pls", ".plst", ".ply", ".pna", ".pno", ".ppc", ".ppcx",
    ".prg", ".psf", ".psm", ".psy", ".ptf", ".ptm", ".pts", ".ptx", ".pvc", ".qcp", ".r", ".r1m",
    ".ra", ".ram", ".raw", ".rax", ".rbs", ".rcy", ".record", ".rex", ".rfl", ".rgrp", ".rip",
    ".rmf", ".rmi", ".rmj", ".rmm", ".rmx", ".rng", ".rns", ".rol", ".rsn", ".rso", ".rta",
    ".rti", ".rtm", ".rts", ".rvx", ".rx2", ".s3i", ".s3m", ".s3z", ".saf", ".sam", ".sap", ".sb",
    ".sbg", ".sbi", ".sbk", ".sc2", ".scs11", ".sd", ".sd2", ".sd2f", ".sdat", ".sdii", ".sds",
    ".sdt", ".sdx", ".seg", ".seq", ".ses", ".sesx", ".sf", ".sf2", ".sfap0", ".sfk", ".sfpack",
    ".sfs", ".sgp", ".shn", ".sib", ".sid", ".slp", ".slx", ".sma", ".smf", ".smp", ".snd",
    ".sng", ".sns", ".sou", ".sph", ".sppack", ".sprg", ".spx", ".sseq", ".ssnd", ".stap", ".stm",
    ".stx", ".sty", ".svd", ".svx", ".sw", ".swa", ".swav", ".sxt", ".syh", ".syn", ".syw",
    ".syx", ".tak", ".td0", ".tfmx", ".tg", ".thx", ".tm2", ".tm8", ".tmc", ".toc", ".trak",
    ".tsp", ".tta", ".tun", ".txw", ".u", ".u8", ".uax", ".ub", ".ulaw", ".ult", ".ulw", ".uni",
    ".usf", ".usflib", ".ust", ".uw", ".uwf", ".v2m", ".vag", ".val", ".vap", ".vb", ".vc3",
    ".vdj", ".vgm", ".vgz", ".vlc", ".vmd", ".vmf", ".vmo", ".voc", ".voi", ".vox", ".voxal",
    ".vpl", ".vpm", ".vqf", ".vrf", ".vsq", ".vtx", ".vyf", ".w01", ".w64", ".wav", ".wave",
    ".wax", ".wem", ".wfb", ".wfd", ".wfm", ".wfp", ".wma", ".wow", ".wpk", ".wpp", ".wproj",
    ".wrk", ".wtpl", ".wtpt", ".wus", ".wut", ".wv", ".wvc", ".wve", ".wwu", ".wyz", ".xa",
    ".xfs", ".xi", ".xm", ".xmf", ".xmi", ".xmz", ".xp", ".xrns", ".xsb", ".xsp", ".xspf", ".xt",
    ".xwb", ".ym", ".yookoo", ".zpa", ".zpl", ".zvd", ".zvr",
};
const int audio_entries_count = int(sizeof(audio_entries) / sizeof(audio_entries[0]));

const char* const video_entries[] = {
    ".264", ".3g2", ".3gp", ".3gp2", ".3gpp", ".3gpp2", ".3mm", ".3p2", ".60d", ".787", ".aaf",
    ".aec", ".aep", ".aepx", ".aet", ".aetx", ".ajp", ".ale", ".am", ".amc", ".amv", ".amx",
    ".anim", ".aqt", ".arcut", ".arf", ".asf", ".asx", ".avb", ".avc", ".avd", ".avi", ".avp",
    ".avs", ".avv", ".axm", ".bdm", ".bdmv", ".bdt2", ".bdt3", ".bik", ".bin", ".bix", ".bmc",
    ".bmk", ".bnp", ".box", ".bs4", ".bsf", ".bvr", ".byu", ".camproj", ".camrec", ".camv",
    ".ced", ".cel", ".cine", ".cip", ".clpi", ".cmmp", ".cmmtpl", ".cmproj", ".cmrec", ".cpi",
    ".cst", ".cvc", ".cx3", ".d2v", ".d3v", ".dat", ".dav", ".dce", ".dck", ".dcr", ".ddat",
    ".dif", ".dir", ".divx", ".dlx", ".dmb", ".dmsd", ".dmsd3d", ".dmsm", ".dmsm3d", ".dmss",
    ".dmx", ".dnc", ".dpa", ".dpg", ".dream", ".dsy", ".dv", ".dv-avi", ".dv4", ".dvdmedia",
    ".dvr", ".dvr-ms", ".dvx", ".dxr", ".dzm", ".dzp", ".dzt", ".edl", ".evo", ".eye", ".ezt",
    ".f4f", ".f4p", ".f4v", ".fbr", ".fbz", ".fcp", ".fcproject", ".ffd", ".flc", ".flh", ".fli",
    ".flv", ".flx", ".ftc", ".gfp", ".gl", ".gom", ".grasp", ".gts", ".gvi", ".gvp", ".h264",
    ".hdmov", ".hkm", ".mov", ".mkv", ".mp4",
};
const int video_entries_count = int(sizeof(video_entries) / sizeof(video_entries[0]));


// Entries inserted a second time.
const char* const image_repeated_entries[] = {".jpg", ".jpeg", ".png", ".gif", ".bmp", ".tif", ".tiff", ".psd", ".svg", ".webp", ".dib", ".jpe", ".jfif", ".pict", ".pic", ".thm", ".tga", ".pcx", ".wmf", ".emf", ".eps", ".ai"};
const int image_repeated_entries_count =
    int(sizeof(image_repeated_entries) / sizeof(image_repeated_entries[0]));
const char* const audio_repeated_entries[] = {".mp3", ".wav", ".wma", ".aac", ".flac", ".ogg", ".m4a", ".aif", ".aiff", ".mid", ".midi", ".amr", ".ape", ".au", ".mka", ".opus", ".ra", ".ram", ".snd", ".voc", ".wv", ".ac3", ".dts", ".m4b", ".mpa", ".oga"};
const int audio_repeated_entries_count =
    int(sizeof(audio_repeated_entries) / sizeof(audio_repeated_entries[0]));
const char* const video_repeated_entries[] = {".mp4", ".avi", ".mov"};
const int video_repeated_entries_count =
    int(sizeof(video_repeated_entries) / sizeof(video_repeated_entries[0]));

}  // namespace media_extension_lists
