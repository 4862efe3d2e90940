// The document against a plain model, its steps of undo, and the search in it.

#include "hexdocument.h"
#include "hexsearch.h"

#include <QtTest>
#include <random>

class TestHexDocument : public QObject
{
    Q_OBJECT

private slots:
    // 100,000 edits, undos and redos. The model keeps whole byte arrays.
    void behavesLikeTheModel()
    {
        std::mt19937 random(20240607);
        const auto below = [&random](int limit) {
            return static_cast<int>(random() % static_cast<unsigned>(limit));
        };
        QByteArray model(1000, Qt::Uninitialized);
        for (char &byte : model)
            byte = static_cast<char>(below(256));
        HexDocument document = documentOf(model, 77);
        QVector<QByteArray> past, future;
        for (int i = 0; i < 100000; ++i) {
            const int action = below(10);
            if (action < 2 && !past.isEmpty()) {
                future.append(model);
                model = past.takeLast();
                QVERIFY(document.undo() >= 0);
            } else if (action < 4 && !future.isEmpty()) {
                past.append(model);
                model = future.takeLast();
                QVERIFY(document.redo() >= 0);
            } else {
                const int at = below(model.size() + 1);
                const int removed = below(12);
                QByteArray put(below(model.size() > 3000 ? 6 : 12), static_cast<char>(i));
                const int there = qMin(removed, model.size() - at);
                if (there > 0 || !put.isEmpty()) {
                    past.append(model);
                    future.clear();
                    if (past.size() > 300)
                        past.removeFirst();
                    model.replace(at, there, put);
                }
                document.replace(at, removed, put);
            }
            QCOMPARE(document.size(), qint64(model.size()));
            QCOMPARE(document.canRedo(), !future.isEmpty());
            const int from = below(model.size() + 1);
            QVERIFY2(document.read(from, 40) == model.mid(from, 40), qPrintable(QString::number(i)));
            if (i % 997 == 0)
                QCOMPARE(all(document), model);
        }
        QCOMPARE(all(document), model);
    }

    void joinsTyping()
    {
        using Step = HexDocument::Step;
        HexDocument document = documentOf("0123456789", 4);
        document.replace(2, 1, "A", Step::Typing); // two digits of one byte, and on to the next
        document.replace(2, 1, "B", Step::Typing);
        document.replace(3, 1, "C", Step::Typing);
        QCOMPARE(all(document), QByteArray("01BC456789"));
        document.endTyping();
        document.replace(9, 1, "", Step::Typing); // backwards, then forwards
        document.replace(8, 1, "", Step::Typing);
        document.endTyping();
        document.replace(0, 1, "", Step::Typing);
        document.replace(0, 1, "", Step::Typing);
        QCOMPARE(all(document), QByteArray("BC4567"));
        document.replace(3, 0, "x", Step::Typing); // elsewhere
        const QByteArray steps[] = {"BC4567", "01BC4567", "01BC456789", "0123456789"};
        for (const QByteArray &step : steps) {
            QVERIFY(document.undo() >= 0);
            QCOMPARE(all(document), step);
        }
        QCOMPARE(document.undo(), qint64(-1));
        while (document.redo() >= 0) {
        }
        QCOMPARE(document.redo(), qint64(-1));
        QCOMPARE(all(document), QByteArray("BC4x567"));
        // A step can be overseen: a hundred bytes are more than one.
        for (int i = 0; i < 100; ++i)
            document.replace(i, 0, "z", Step::Typing);
        document.undo();
        QVERIFY(document.size() > 7 && document.size() < 107);
    }

    void knowsWhatIsSaved()
    {
        HexDocument document = documentOf("abcdef", 6);
        QVERIFY(!document.isModified());
        document.replace(1, 2, "XY");
        QVERIFY(document.isModified());
        document.setSaved();
        QVERIFY(!document.isModified());
        document.undo();
        QVERIFY(document.isModified());
        document.redo();
        QVERIFY(!document.isModified());
        document.undo();
        document.replace(0, 1, "-"); // the saved state is out of reach
        document.undo();
        document.redo();
        QVERIFY(document.isModified());
        // Typing after saving is a step of its own.
        HexDocument other = documentOf("", 1);
        other.replace(0, 0, "a", HexDocument::Step::Typing);
        other.setSaved();
        other.replace(1, 0, "b", HexDocument::Step::Typing);
        other.undo();
        QVERIFY(!other.isModified());
        QCOMPARE(all(other), QByteArray("a"));
    }

    // '!' for each byte that differs from the saved ones, by what was done.
    void marksWhatDiffersFromTheFile()
    {
        HexDocument document = documentOf("abcdefgh", 3);
        const auto marks = [&document] {
            QByteArray text;
            for (const bool changed : document.changes(0, static_cast<int>(document.size())))
                text.append(changed ? '!' : '.');
            return text;
        };
        const auto replaceAll = [&document](const QByteArray &what, const QByteArray &with) {
            HexDocument::Batch many;
            for (int at = all(document).indexOf(what); at >= 0;
                 at = all(document).indexOf(what, at + what.size()))
                document.addToBatch(many, at, what.size(), with);
            document.applyBatch(many);
        };
        document.replace(1, 3, "XcY");
        QCOMPARE(marks(), QByteArray(".!.!...."));
        document.setSaved(); // aXcYefgh
        QCOMPARE(marks(), QByteArray("........"));
        document.undo(); // behind the save
        QCOMPARE(marks(), QByteArray(".!.!...."));
        document.redo();
        document.replace(4, 0, "in");
        QCOMPARE(marks(), QByteArray("....!!...."));
        document.setSaved(); // aXcYinefgh
        document.undo();
        document.replace(0, 2, "");
        QCOMPARE(marks(), QByteArray("......"));
        document = documentOf("a-b-a-b-a", 4);
        document.replace(2, 1, "B");
        replaceAll("a", "A"); // near each other
        QCOMPARE(all(document), QByteArray("A-B-A-b-A"));
        QCOMPARE(marks(), QByteArray("!.!.!...!"));
        replaceAll("A", "aa");
        QCOMPARE(marks(), QByteArray("!!.!.!!...!!"));
        document.setSaved();
        document.undo();
        document.undo();
        document.undo();
        QCOMPARE(all(document), QByteArray("a-b-a-b-a"));
        document.setSaved();
        while (document.redo() >= 0) {
        }
        QCOMPARE(all(document), QByteArray("aa-B-aa-b-aa"));
        QVERIFY(document.changes(0, 12)[3]); // never unmarked by mistake
        document.setSaved();
        document.setUnsaved();
        QVERIFY(document.isModified());
        document = documentOf("a-b-a-b-a", 4);
        replaceAll("a", "A");
        document.setSaved();
        replaceAll("b", "BB"); // what lies between has been stored again
        QCOMPARE(marks(), QByteArray("..!!...!!.."));
        document.setSaved();
        // Typing is one step all the same.
        const qint64 size = document.size();
        for (int i = 0; i < 3; ++i)
            document.replace(i, 0, "z", HexDocument::Step::Typing);
        document.undo();
        QCOMPARE(document.size(), size);
    }

    void finds()
    {
        constexpr int slice = 1 << 18;
        QByteArray bytes(600000, '.');
        const auto put = [&bytes](int at, const QByteArray &what) { bytes.replace(at, what.size(), what); };
        put(0, "start");
        put(300000, "needle");
        put(slice - 1, "cut");
        put(600000 - slice - 5, "back");
        put(599997, "end");
        put(10000, "twin");
        put(500000, "twin");
        HexDocument document = documentOf("", 1);
        document.replace(0, 0, bytes);
        QVERIFY(all(document) == bytes);
        HexSearch nowhere(document, HexPattern::bytes("nowhere"), 0, HexSearch::Forward);
        QVERIFY(nowhere.permille() == 0 && nowhere.step() == HexSearch::State::Running);
        QCOMPARE(nowhere.permille(), slice * 1000 / bytes.size());
        document = documentOf(bytes, 4096);
        document.replace(100002, 2, "di");
        document.replace(100000, 2, "+e");
        document.replace(100004, 2, "t+");
        // Where it is found from the place, or -1, and whether round the end.
        const std::tuple<QByteArray, int, HexSearch::Direction, qint64, bool> rows[] = {
            {"needle", 300000, HexSearch::Forward, 300000, false},
            {"needle", 1, HexSearch::Forward, 300000, false},
            {"needle", 300001, HexSearch::Forward, 300000, true},
            {"needle", 600000, HexSearch::Backward, 300000, false},
            {"needle", 300000, HexSearch::Backward, 300000, true},
            {"end", 0, HexSearch::Forward, 599997, false},
            {"start", 600000, HexSearch::Backward, 0, false},
            {"cut", 0, HexSearch::Forward, slice - 1, false}, // over two slices
            {"back", 599999, HexSearch::Backward, 600000 - slice - 5, false},
            {"+edit+", 0, HexSearch::Forward, 100000, false},
            {"twin", 0, HexSearch::Forward, 10000, false}, // the nearest
            {"twin", 600000, HexSearch::Backward, 500000, false},
            {"nowhere", 5, HexSearch::Forward, -1, true},
            {QByteArray(700000, '.'), 5, HexSearch::Forward, -1, true},
            {QByteArray(), 5, HexSearch::Forward, -1, true}};
        for (const auto &[pattern, from, direction, position, wraps] : rows) {
            HexSearch search(document, HexPattern::bytes(pattern), from, direction);
            HexSearch::State state = HexSearch::State::Running;
            for (int steps = 0; state == HexSearch::State::Running && steps < 20; ++steps)
                state = search.step();
            QCOMPARE(state, position < 0 ? HexSearch::State::NotFound : HexSearch::State::Found);
            QVERIFY(position < 0 || (search.position() == position && search.hasWrapped() == wraps));
        }
    }

private:
    static HexDocument documentOf(const QByteArray &bytes, int block)
    {
        HexDocument document;
        for (int at = 0; at < bytes.size(); at += block)
            document.appendContent(bytes.mid(at, block));
        return document;
    }
    static QByteArray all(const HexDocument &document)
    {
        return document.read(0, static_cast<int>(document.size()));
    }
};

QTEST_APPLESS_MAIN(TestHexDocument)
#include "test_hex_document.moc"
