// Where two documents differ: the differences lead from the one to the other.

#include "hexcompare.h"
#include "hexfilebytes.h"

#include <QDir>
#include <QTemporaryFile>
#include <QtTest>

#include <random>

namespace {

HexDocument documentOf(const QByteArray &bytes, int block)
{
    HexDocument document;
    for (int at = 0; at < bytes.size(); at += block)
        document.appendContent(bytes.mid(at, block));
    return document;
}

struct Compared
{
    Compared(const QByteArray &left, const QByteArray &right, bool aligned)
        : leftDocument(documentOf(left, 1000))
        , rightBytes(documentOf(right, 77))
        , compare(leftDocument, rightBytes, aligned)
    {
        while (compare.step()) {
        }
    }

    HexDocument leftDocument;
    HexDocumentBytes rightBytes;
    HexCompare compare;
};

QByteArray random(std::mt19937 &generator, int size)
{
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(generator());
    return bytes;
}

} // namespace

class TestHexCompare : public QObject
{
    Q_OBJECT

private slots:
    // Random edits of all kinds; what is listed makes the right side of the left one.
    void leadsFromOneToTheOther()
    {
        std::mt19937 generator(7);
        for (int round = 0; round < 60; ++round) {
            const QByteArray left = random(generator, int(generator() % 5000));
            QByteArray right = left;
            const bool onlyChanges = round % 3 == 0;
            for (int edit = 0; edit < int(generator() % 6) && !right.isEmpty(); ++edit) {
                const int at = int(generator() % uint(right.size())), count = 1 + int(generator() % 300);
                const int removed = onlyChanges ? qMin(count, right.size() - at) : int(generator() % 300);
                const QByteArray put = random(generator, onlyChanges ? removed : int(generator() % 300));
                right.replace(at, removed, put);
            }
            for (const bool aligned : {false, true}) {
                const Compared compared(left, right, aligned);
                QByteArray made;
                qint64 from = 0, row = 0;
                for (const HexCompare::Difference &difference : compared.compare.differences()) {
                    made += left.mid(int(from), int(difference.left - from));
                    row += difference.left - from;
                    QCOMPARE(qint64(made.size()), difference.right);
                    QCOMPARE(row, difference.row);
                    made += right.mid(int(difference.right), int(difference.rightLength));
                    from = difference.left + difference.leftLength;
                    row += difference.length();
                }
                made += left.mid(int(from));
                QVERIFY(made == right);
                QCOMPARE(compared.compare.rows(), row + left.size() - from);
                if (!aligned)
                    for (const HexCompare::Difference &difference : compared.compare.differences())
                        QCOMPARE(difference.left, difference.right);
            }
        }
    }

    void findsWhatWasInserted()
    {
        std::mt19937 generator(8);
        const QByteArray bytes = random(generator, 3000000);
        QByteArray right = bytes;
        right[5] = char(right.at(5) ^ 1);
        right.insert(1500000, random(generator, 60000));
        right.remove(2500000, 300);
        right.insert(right.size() - 4, "abc");
        const Compared compared(bytes, right, true);
        const auto &found = compared.compare.differences();
        QCOMPARE(found.size(), size_t(4));
        QVERIFY(found[0].left == 5 && found[0].leftLength == 1 && found[0].rightLength == 1);
        QVERIFY(qAbs(found[1].left - 1500000) < 3 && found[1].rightLength - found[1].leftLength == 60000 &&
                found[1].leftLength == 0);
        QVERIFY(found[2].leftLength - found[2].rightLength == 300 && found[2].rightLength == 0);
        QVERIFY(found[3].leftLength == 0 && found[3].rightLength == 3);
        // Farther apart than a shift may be: the rest differs, which is true.
        QByteArray far = bytes;
        far.insert(1000, random(generator, HexCompare::maxShift + 100));
        QVERIFY(!Compared(bytes, far, true).compare.differences().empty());
        // Nothing in common but the limit of time: it ends.
        QVERIFY(!Compared(bytes.left(200000), random(generator, 200000), true).compare.differences().empty());
    }

    void endsWhereAFileIsCut()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        const QByteArray bytes(600000, 'x');
        QVERIFY(file.write(bytes) == bytes.size() && file.flush());
        HexFileBytes other;
        QVERIFY(other.open(file.fileName()));
        const HexDocument document = documentOf(bytes, 100000);
        HexCompare whole(document, other, false);
        while (whole.step()) {
        }
        QVERIFY(!whole.hasFailed() && whole.differences().empty() && whole.rows() == bytes.size());
        HexCompare compare(document, other, false);
        QVERIFY(file.resize(300000));
        qint64 inRow = 0;
        QVERIFY(other.span(0, &inRow) && !other.span(299999 + 262144, &inRow));
        while (compare.step()) {
        }
        QVERIFY(compare.hasFailed() && compare.differences().empty() && compare.rows() == 300000);
        QVERIFY(!HexFileBytes().open(QDir::tempPath()));
    }

    void comparesWithTheSavedBytes()
    {
        HexDocument document = documentOf("0123456789", 3);
        document.replace(2, 1, "x");
        document.setSaved();
        document.replace(8, 0, "new");
        const HexDocumentBytes saved(document.savedState());
        QCOMPARE(saved.read(0, 100), QByteArray("01x3456789"));
        HexCompare compare(document, saved, true);
        while (compare.step()) {
        }
        QCOMPARE(compare.differences().size(), size_t(1));
        QCOMPARE(compare.differences()[0].leftLength, 3);
        QVERIFY(Compared("", "", true).compare.differences().empty());
        QCOMPARE(Compared("", "ab", false).compare.rows(), 2);
    }
};

QTEST_APPLESS_MAIN(TestHexCompare)
#include "test_hex_compare.moc"
