// placeholder
#include <QtTest>
class test_winos_end_to_end : public QObject { Q_OBJECT };
QTEST_GUILESS_MAIN(test_winos_end_to_end)
#include "test_winos_end_to_end.moc"
