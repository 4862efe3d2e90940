// CRCs against the check values that catalogues of them list for "123456789".

#include "checksum.h"

#include <QTest>

class TestChecksum : public QObject
{
    Q_OBJECT

private slots:
    void checkValues()
    {
        const std::tuple<CrcModel, quint32> rows[] = {
            {CrcModels::crc8, 0xF4},
            {CrcModels::crc16Xmodem, 0x31C3},
            {CrcModels::crc16CcittFalse, 0x29B1},
            {CrcModels::crc16Modbus, 0x4B37},
            {CrcModels::crc32, 0xCBF43926},
            {{16, 0x8005, 0xFFFF, false, false, 0x0000}, 0xAEE7}, // CMS
            {{16, 0x1021, 0x0000, true, true, 0x0000}, 0x2189},   // KERMIT
            {{12, 0x80F, 0x000, false, true, 0x000}, 0xDAF},      // UMTS, mirrored at its end only
        };
        for (const auto &[model, check] : rows) {
            Crc crc(model);
            crc.add("lost", 4);
            crc.reset();
            crc.add("1234", 4);
            crc.add("", 0);
            crc.add("56789", 5);
            QCOMPARE(crc.value(), check);
            QCOMPARE(Crc::of(model, "123456789", 9), check);
        }
    }
};

QTEST_APPLESS_MAIN(TestChecksum)
#include "test_checksum.moc"
