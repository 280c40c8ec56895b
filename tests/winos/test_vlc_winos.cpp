// placeholder
#include <QtTest>
class test_vlc_winos : public QObject { Q_OBJECT };
QTEST_GUILESS_MAIN(test_vlc_winos)
#include "test_vlc_winos.moc"
