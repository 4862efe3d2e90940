// The editor as keyboard, mouse and clipboard work it.

#include "korvexresources.h"
#include "qhexedit.h"
#include "qtmessagetip.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QScrollBar>
#include <QtTest>

class TestQHexEdit : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initKorvexResources(); }
    void init();
    void cleanup() { m_edit.reset(); }
    void tellsAddressAndSize();
    void types_data();
    void types();
    void undoesTypingStepwise();
    void movesAndSelects_data();
    void movesAndSelects();
    void selectsByMouse();
    void keepsTheCaretInSight();
    void copiesAndPastes();
    void movesBytesExactly_data();
    void movesBytesExactly();
    void refusesWhatTextCannotSay();
    void pastesLongTextInSlices();
    void takesChineseInTheTextColumn();
    void drawsCharactersOfTheCodec();
    void refusesWhenReadOnly();
    void drawsOnlyWhatIsVisible();

private:
    void keys(const QString &names);
    QByteArray content() const
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        return m_edit->write(buffer) ? buffer.data() : QByteArray("(failed)");
    }
    void showData(const QByteArray &data)
    {
        m_edit->setData(data);
        m_edit->setOverwrite(true);
    }
    // The middle of a byte's left digit, or of its character.
    QPoint at(qint64 address, bool inText) const
    {
        HexLayout layout;
        layout.update(m_edit->fontMetrics(), m_edit->size());
        const int row = static_cast<int>(address / 16) + 1; // below the header
        const int column = static_cast<int>(address % 16);
        const QRect cell = inText ? layout.text(row, column) : layout.hex(row, column);
        return {cell.left() + layout.cellWidth() / 2, cell.center().y()};
    }
    void click(qint64 address, bool inText, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseClick(m_edit->viewport(), Qt::LeftButton, modifiers, at(address, inText));
    }

    std::unique_ptr<QHexEdit> m_edit;
};

void TestQHexEdit::init()
{
    m_edit = std::make_unique<QHexEdit>();
    m_edit->resize(900, 400);
    m_edit->show();
}

// "A1 Ins Left Shift+Right ..."; what is no key's name is typed.
void TestQHexEdit::keys(const QString &names)
{
    for (const QString &name : names.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QKeySequence sequence(name);
        const int code = static_cast<int>(sequence[0]);
        const int modifiers = static_cast<int>(Qt::KeyboardModifierMask);
        if ((name.size() > 2 || name == "Up") && code != Qt::Key_unknown)
            QTest::keyClick(m_edit.get(), Qt::Key(code & ~modifiers),
                            Qt::KeyboardModifiers(code & modifiers));
        else
            QTest::keyClicks(m_edit.get(), name);
    }
}

void TestQHexEdit::tellsAddressAndSize()
{
    QSignalSpy address(m_edit.get(), &QHexEdit::currentAddressChanged);
    QSignalSpy size(m_edit.get(), &QHexEdit::currentSizeChanged);
    showData(QByteArray(100, 'x'));
    QCOMPARE(size.takeLast().at(0).toLongLong(), qint64(100));
    keys("Right Right");
    QCOMPARE(address.takeLast().at(0).toLongLong(), qint64(2));
    keys("Ins Del");
    QCOMPARE(size.takeLast().at(0).toLongLong(), qint64(99));
    m_edit->goTo(1000);
    QCOMPARE(address.takeLast().at(0).toLongLong(), qint64(99));
    m_edit->setData(QByteArray());
    QCOMPARE(address.takeLast().at(0).toLongLong(), qint64(0));
    QCOMPARE(size.takeLast().at(0).toLongLong(), qint64(0));
}

void TestQHexEdit::types_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QByteArray>("expected"); // of "0123" and an end
    QTest::addColumn<int>("address");
    QTest::newRow("overwrites") << "4142" << QByteArray("AB23") << 2;
    QTest::newRow("half a byte") << "4" << QByteArray("@123") << 0;
    QTest::newRow("takes half a byte back") << "41 5 Backspace 42" << QByteArray("AB23") << 2;
    QTest::newRow("takes an inserted half back") << "Ins 41 5 Backspace" << QByteArray("A0123") << 1;
    QTest::newRow("inserts") << "Ins 4142" << QByteArray("AB0123") << 2;
    QTest::newRow("appends") << "Ctrl+End 4142" << QByteArray("0123AB") << 6;
    QTest::newRow("no digits") << "xyz" << QByteArray("0123") << 0;
    QTest::newRow("text column") << "Tab xyz" << QByteArray("xyz3") << 3;
    QTest::newRow("inserts text") << "Tab Ins xyz" << QByteArray("xyz0123") << 3;
    QTest::newRow("deletes") << "Ins Right Del Backspace" << QByteArray("23") << 0;
    QTest::newRow("nothing to delete") << "Ins Backspace Ctrl+End Del" << QByteArray("0123") << 4;
    QTest::newRow("deletes the selection") << "Ins Shift+Right Shift+Right Del" << QByteArray("23") << 0;
    QTest::newRow("over a selection") << "Right Shift+Right Shift+Right 41" << QByteArray("0A23") << 2;
    QTest::newRow("instead of a selection")
        << "Ins Right Shift+Right Shift+Right 41" << QByteArray("0A3") << 2;
    QTest::newRow("shifts nothing") << "Right Del Backspace Shift+Right Del Ctrl+X" << QByteArray("0123")
                                    << 2;
    QTest::newRow("all") << "Ins Ctrl+A Del" << QByteArray("") << 0;
}

void TestQHexEdit::types()
{
    QFETCH(QString, typed);
    showData("0123");
    keys(typed);
    QTEST(content(), "expected");
    QTEST(static_cast<int>(m_edit->address()), "address");
    while (m_edit->document().canUndo())
        m_edit->undo();
    QCOMPARE(content(), QByteArray("0123"));
    QVERIFY(!m_edit->isModified());
}

void TestQHexEdit::undoesTypingStepwise()
{
    showData("0123456789");
    keys("414243 Right 44");
    QCOMPARE(content(), QByteArray("ABC3D56789"));
    m_edit->undo();
    QCOMPARE(content(), QByteArray("ABC3456789"));
    QCOMPARE(m_edit->address(), qint64(4));
    m_edit->undo();
    QCOMPARE(content(), QByteArray("0123456789"));
    m_edit->redo();
    m_edit->redo();
    QCOMPARE(content(), QByteArray("ABC3D56789"));
}

void TestQHexEdit::movesAndSelects_data()
{
    QTest::addColumn<QString>("pressed"); // with the caret at 100 of 1000
    QTest::addColumn<int>("begin");
    QTest::addColumn<int>("length");
    QTest::newRow("home") << "Home" << 96 << 0;
    QTest::newRow("end") << "End" << 111 << 0;
    QTest::newRow("the rest of the row") << "Shift+End Shift+End" << 100 << 12;
    QTest::newRow("start") << "Ctrl+Home" << 0 << 0;
    QTest::newRow("very end") << "Ctrl+End" << 1000 << 0;
    QTest::newRow("up, down") << "Up Up Down" << 84 << 0;
    QTest::newRow("not above the top") << "Ctrl+Home Up" << 0 << 0;
    QTest::newRow("to the start") << "Shift+Ctrl+Home" << 0 << 100;
    QTest::newRow("to the end") << "Shift+Ctrl+End" << 100 << 900;
    QTest::newRow("rows") << "Shift+Down Shift+Left" << 100 << 15;
    QTest::newRow("backwards") << "Shift+Left Shift+Up" << 83 << 17;
    QTest::newRow("all") << "Ctrl+A" << 0 << 1000;
    QTest::newRow("given up") << "Shift+Right Left" << 100 << 0;
}

void TestQHexEdit::movesAndSelects()
{
    QFETCH(QString, pressed);
    showData(QByteArray(1000, 'x'));
    m_edit->goTo(100);
    keys(pressed);
    QTEST(static_cast<int>(m_edit->selectionBegin()), "begin");
    QTEST(static_cast<int>(m_edit->selectionLength()), "length");
}

void TestQHexEdit::selectsByMouse()
{
    showData(QByteArray(100, 'x'));
    click(18, false);
    QCOMPARE(m_edit->address(), qint64(18));
    QCOMPARE(m_edit->selectionLength(), qint64(0));
    const auto drag = [this](qint64 from, qint64 to, bool inText) {
        QTest::mousePress(m_edit->viewport(), Qt::LeftButton, {}, at(from, inText));
        QMouseEvent move(QEvent::MouseMove, at(to, inText), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(m_edit->viewport(), &move);
        QTest::mouseRelease(m_edit->viewport(), Qt::LeftButton, {}, at(to, inText));
        return std::make_pair(m_edit->selectionBegin(), m_edit->selectionLength());
    };
    // Both ends belong to it, either way.
    QCOMPARE(drag(5, 20, false), std::make_pair(qint64(5), qint64(16)));
    QCOMPARE(drag(20, 5, true), std::make_pair(qint64(5), qint64(16)));
    click(9, true);
    keys("Z"); // the text column was clicked
    QCOMPARE(content().mid(8, 3), QByteArray("xZx"));
    // The right digit of a byte.
    QTest::mouseClick(m_edit->viewport(), Qt::LeftButton, {},
                      at(9, false) + QPoint(m_edit->fontMetrics().horizontalAdvance('0'), 0));
    keys("b");
    QCOMPARE(content().mid(8, 3), QByteArray("x[x"));
    click(2, false);
    for (int i = 0; i < 2; ++i) { // the first byte stays, whichever way and how often
        click(6, false, Qt::ShiftModifier);
        QCOMPARE(m_edit->selectionBegin(), qint64(2));
        QCOMPARE(m_edit->selectionLength(), qint64(5));
        for (const qint64 before : {1, 0}) {
            click(before, false, Qt::ShiftModifier);
            QCOMPARE(m_edit->selectionBegin(), before);
            QCOMPARE(m_edit->selectionLength(), 3 - before);
        }
    }
}

void TestQHexEdit::copiesAndPastes()
{
    QClipboard *clipboard = QApplication::clipboard();
    showData("\x01\xAB"
             "cd");
    m_edit->select(0, 2);
    m_edit->copy();
    QCOMPARE(clipboard->text(), QStringLiteral("01 AB"));
    m_edit->select(2, 2);
    m_edit->copyText();
    QCOMPARE(clipboard->text(), QStringLiteral("cd"));
    clipboard->setText(QStringLiteral("0x31, 0x32"));
    m_edit->goTo(0);
    keys("Ctrl+V");
    QCOMPARE(content(), QByteArray("12cd")); // over, not between
    m_edit->setOverwrite(false);
    keys("Ctrl+V");
    QCOMPARE(content(), QByteArray("1212cd"));
    clipboard->setText(QStringLiteral("no digits"));
    keys("Ctrl+V");
    QCOMPARE(content(), QByteArray("1212cd"));
    QVERIFY(QtMessageTip::current() && QtMessageTip::current()->isVisible());
    keys("Tab Ctrl+V Shift+Left Ctrl+X");
    QCOMPARE(content(), QByteArray("1212no digitcd"));
    QCOMPARE(clipboard->text(), QStringLiteral("s"));
    m_edit->undo();
    m_edit->undo();
    QCOMPARE(content(), QByteArray("1212cd"));
}

// What is cut from one column and pasted into the other is what it was, and no
// half of a character stays behind.
void TestQHexEdit::movesBytesExactly_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("codec");
    QTest::addColumn<bool>("inText");
    QTest::addColumn<int>("begin");
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("left");
    QTest::addColumn<QString>("text"); // for other programs
    const QByteArray binary("\x00\xff\x80\xc3z", 5);
    QTest::newRow("no text") << binary << 0 << true << 0 << 4 << QByteArray("z")
                             << QString(QChar(0)) + QString(3, QChar(0xFFFD));
    const QByteArray chinese("a\xCE\xC2\xB6\xC8z");
    QTest::newRow("halves") << chinese << 1 << true << 2 << 2 << QByteArray("az") << QStringLiteral("温度");
    QTest::newRow("bytes") << chinese << 1 << false << 2 << 2 << QByteArray("a\xCE\xC8z") << "C2 B6";
    QTest::newRow("mark") << QByteArray("\xEF\xBB\xBF"
                                        "12")
                          << 0 << true << 0 << 4 << QByteArray("2") << QStringLiteral("\uFEFF1");
}

void TestQHexEdit::movesBytesExactly()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, codec);
    QFETCH(bool, inText);
    QFETCH(int, begin);
    QFETCH(int, length);
    showData(bytes);
    m_edit->setTextCodec(codec);
    m_edit->setOverwrite(false);
    click(0, inText);
    m_edit->select(begin, length);
    keys("Ctrl+X");
    QTEST(content(), "left");
    QTEST(QApplication::clipboard()->text(), "text");
    keys(inText ? "Shift+Tab Ctrl+V" : "Tab Ctrl+V");
    QCOMPARE(content(), bytes);
}

void TestQHexEdit::refusesWhatTextCannotSay()
{
    showData("z");
    click(0, true);
    for (const QString &text : {QStringLiteral("a\uFFFD"), QString(QChar(0xD800)) + 'a', QString()}) {
        QtMessageTip::showTip(QString());
        QApplication::clipboard()->setText(text);
        keys("Ctrl+V");
        QCOMPARE(content(), QByteArray("z"));
        QVERIFY(!QtMessageTip::current()->text().isEmpty());
    }
    QApplication::clipboard()->setText(QStringLiteral("\uFEFF\U0001F600"));
    keys("Ctrl+V");
    QCOMPARE(content(), QByteArray("\xEF\xBB\xBF\xF0\x9F\x98\x80"));
}

// It arrives where the caret was, and nothing is edited before.
void TestQHexEdit::pastesLongTextInSlices()
{
    const int count = 6 << 20; // more than fits into the first slice
    showData("0123");
    keys("Ins Right");
    QApplication::clipboard()->setText(QStringLiteral("41 ").repeated(count));
    keys("Ctrl+V");
    QVERIFY(m_edit->task()->isRunning());
    QtMessageTip::showTip(QString());
    keys("Right Del");
    QVERIFY(!QtMessageTip::current()->text().isEmpty());
    QTRY_VERIFY_WITH_TIMEOUT(!m_edit->task()->isRunning(), 60000);
    QCOMPARE(content(), "0" + QByteArray(count, 'A') + "123");
}

void TestQHexEdit::keepsTheCaretInSight()
{
    showData(QByteArray(10000, 'x'));
    for (const qint64 address : {9999, 5000, 5016, 0}) {
        m_edit->goTo(address);
        keys(address == 5016 ? "PgDown Down" : "Down");
        const QRect caret = m_edit->inputMethodQuery(Qt::ImCursorRectangle).toRect();
        QVERIFY2(m_edit->viewport()->rect().contains(caret), qPrintable(QString::number(address)));
        QVERIFY(caret.top() >= caret.height()); // below the header
    }
}

void TestQHexEdit::takesChineseInTheTextColumn()
{
    const auto commit = [this](const QString &text) {
        QInputMethodEvent event;
        event.setCommitString(text);
        QApplication::sendEvent(m_edit.get(), &event);
    };
    showData("......");
    QVERIFY(!m_edit->testAttribute(Qt::WA_InputMethodEnabled)); // digits go straight in
    click(0, true);
    QVERIFY(m_edit->testAttribute(Qt::WA_InputMethodEnabled));
    m_edit->setTextCodec(1);
    commit(QStringLiteral("中"));
    QCOMPARE(content(), QByteArray("\xD6\xD0...."));
    m_edit->setTextCodec(0);
    commit(QStringLiteral("中"));
    QCOMPARE(content(), QByteArray("\xD6\xD0\xE4\xB8\xAD."));
    QVERIFY(m_edit->inputMethodQuery(Qt::ImCursorRectangle).toRect().contains(at(5, true)));
}

// Over two cells, at the first byte's, far from the caret.
void TestQHexEdit::drawsCharactersOfTheCodec()
{
    showData("..\xCE\xC2\xCE\xC2..");
    const auto cells = [this](qint64 address) {
        const int width = at(address + 1, true).x() - at(address, true).x();
        const QPoint corner(at(address, true).x() - width / 2, at(address, true).y() - 8);
        return m_edit->viewport()->grab({corner, QSize(2 * width, 16)}).toImage();
    };
    const QImage dots = cells(6);
    m_edit->setTextCodec(0);
    QCOMPARE(cells(2), dots);
    m_edit->setTextCodec(1);
    QVERIFY(cells(2) != dots);
    QCOMPARE(cells(2), cells(4));
    m_edit->setAsciiOnly(true);
    QCOMPARE(cells(2), dots);
}

void TestQHexEdit::refusesWhenReadOnly()
{
    showData("0123");
    keys("41");
    m_edit->setReadOnly(true);
    QApplication::clipboard()->setText(QStringLiteral("55"));
    keys("42 Del Ctrl+V Ctrl+A Ctrl+X");
    m_edit->undo();
    QCOMPARE(content(), QByteArray("A123"));
}

// Scrolling and drawing cost by the rows on display, at any size.
void TestQHexEdit::drawsOnlyWhatIsVisible()
{
    const QByteArray block(64 << 20, 'x'); // shared: three gigabytes cost 64 MB
    for (int i = 0; i < 48; ++i)
        m_edit->appendData(block);
    QCOMPARE(m_edit->size(), qint64(48) * (64 << 20));
    keys("Ctrl+End PgUp 41");
    QVERIFY(m_edit->address() > (qint64(3) << 30) - 1000);
    QCOMPARE(m_edit->verticalScrollBar()->maximum() / 1000, (3 << 26) / 1000);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 50; ++i)
        m_edit->grab();
    QVERIFY2(clock.elapsed() < 20000, "drawing takes longer than rows on display can explain");
}

QTEST_MAIN(TestQHexEdit)
#include "test_qhexedit.moc"
