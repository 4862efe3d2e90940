// The editor as keyboard, mouse and clipboard work it.

#include "hexdrag.h"
#include "korvexresources.h"
#include "qhexedit.h"
#include "qtmessagetip.h"
#include "repaints.h"
#include "skin.h"

#include <QtTest>
#include <QtWidgets>

class TestQHexEdit : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initKorvexResources();
        QApplication::setCursorFlashTime(0);
    }
    void init()
    {
        m_edit = std::make_unique<QHexEdit>();
        m_edit->resize(900, 400);
        m_edit->show();
    }

    void cleanup()
    {
        checkDisplay();
        m_edit.reset();
    }

    void choosesBytesPerRow()
    {
        showData(QByteArray(1000, 'x'));
        m_edit->goTo(100);
        for (const int bytes : {8, 16, 24, 64}) {
            m_edit->setBytesPerRow(bytes);
            m_edit->goTo(100);
            QTest::keyClick(m_edit.get(), Qt::Key_Down);
            QCOMPARE(m_edit->address(), 100 + bytes);
            QTest::keyClick(m_edit.get(), Qt::Key_Home);
            QCOMPARE(m_edit->address(), (100 + bytes) / bytes * bytes);
        }
        m_edit->resize(600, 200);
        for (const int column : {63, 0, 40}) { // the caret is brought into sight
            m_edit->goTo(640 + column);
            const QRect caret = m_edit->view().caretRect();
            QVERIFY(m_edit->viewport()->rect().contains(caret.topLeft()));
            QVERIFY(column == 0 ? m_edit->horizontalScrollBar()->value() == 0
                                : m_edit->viewport()->rect().contains(caret.topRight()));
        }
        m_edit->setBytesPerRow(0);
        m_edit->goTo(0);
        m_edit->verticalScrollBar()->setValue(4);
        const int top = 4 * m_edit->view().layout().bytes();
        m_edit->resize(2000, 100); // the same bytes stay on top
        const int bytes = m_edit->view().layout().bytes();
        QCOMPARE(m_edit->verticalScrollBar()->value(), top / bytes);
        m_edit->resize(900, 400); // what fits is shown without a scroll bar
        QCOMPARE(m_edit->horizontalScrollBar()->maximum(), 0);
        const int before = m_edit->view().layout().bytes();
        m_edit->resize(2000, 400);
        QVERIFY(m_edit->view().layout().bytes() > before && before >= 16);
        m_edit->resize(900, 400);
        m_edit->setBytesPerRow(16);
    }

    void types()
    {
        const std::tuple<const char *, const char *, qint64> rows[] = {
            // of "0123"
            {"4142", "AB23", 2},
            {"4", "@123", 0}, // half a byte
            {"41 5 Backspace 42", "AB23", 2},
            {"Ins 41 5 Backspace", "A0123", 1},
            {"Ins 4", "@0123", 0},
            {"Ins 4142", "AB0123", 2},
            {"Ctrl+End 4142", "0123AB", 6},
            {"ghz", "0123", 0},
            {"Tab xyz", "xyz3", 3},
            {"Tab Ins xyz", "xyz0123", 3},
            {"Ins Right Del Backspace", "23", 0},
            {"Ins Backspace Ctrl+End Del", "0123", 4}, // nothing to delete
            {"Right Shift+Right Shift+Right 41", "0A23", 2},
            {"Ins Right Shift+Right Shift+Right 41", "0A3", 2},
            {"Right Del Backspace Shift+Right Del Ctrl+X", "0123", 2}, // moves no bytes
            {"Ins Ctrl+A Del", "", 0},
            {"4 Tab Shift+Tab 3", "0123", 0},  // a left digit again
            {"41 Right 42 Ctrl+Z", "A123", 2}, // a step ends where the caret moves
            {"41 Right 42 Ctrl+Z Ctrl+Z Ctrl+Shift+Z", "A123", 1},
        };
        for (const auto &[pressed, expected, address] : rows) {
            showData("0123");
            keys("Shift+Tab Home");
            const QSignalSpy edits(m_edit.get(), &QHexEdit::contentChanged);
            keys(pressed);
            QCOMPARE(content(), QByteArray(expected));
            QCOMPARE(m_edit->address(), address);
            QCOMPARE(edits.isEmpty(), !m_edit->document().canUndo());
            m_edit->setReadOnly(true, "because");
            m_edit->undo();
            m_edit->redo();
            QCOMPARE(content(), QByteArray(expected));
            m_edit->setReadOnly(false, QString());
            while (m_edit->document().canUndo())
                m_edit->undo();
            QCOMPARE(content(), QByteArray("0123"));
            QVERIFY(!m_edit->isModified());
        }
        m_edit->setOverwrite(true);
        keys("Ctrl+A Del");
        QVERIFY(QtMessageTip::current()->text().startsWith("改写模式下不能删除"));
    }

    // Rows begin at multiples of 16 and with each run: at 08000004 with 12 bytes,
    // 08000010 with 8, and 08001002 with 5.
    void showsRunsAtTheirAddresses()
    {
        showData("0123456789abcdefghijklmno");
        m_edit->setAddresses(HexAddressMap(HexRuns{{0x8000004, 0, 20}, {0x8001002, 20, 5}}));
        const std::tuple<const char *, qint64, qint64> rows[] = {
            {"Ctrl+Home Down", 16, 0x8000014},
            {"Ctrl+Home Down Down", 22, 0x8001004},
            {"Ctrl+Home Down Up", 0, 0x8000004},
            {"Ctrl+Home End Down", 19, 0x8000017}, // no byte is below: the nearest
            {"Ctrl+Home Down End Right", 20, 0x8001002},
            {"Ctrl+End Home", 20, 0x8001002},
            {"Ctrl+End", 25, 0x8001007},
            {"Ctrl+End Up", 19, 0x8000017},
            {"PgUp PgDown", 25, 0x8001007},
        };
        const QSignalSpy addresses(m_edit.get(), &QHexEdit::currentAddressChanged);
        for (const auto &[pressed, offset, address] : rows) {
            keys(pressed);
            QCOMPARE(m_edit->address(), offset);
            QCOMPARE(addresses.last().at(0).toLongLong(), address);
            QCOMPARE(m_edit->shownAddress(offset), address);
        }
        // Each byte is where a click finds it.
        const std::tuple<int, int, qint64> places[] = {{0, 4, 0},  {0, 15, 11}, {1, 7, 19},
                                                       {2, 2, 20}, {0, 0, 0},   {1, 15, 19},
                                                       {2, 0, 20}, {2, 15, 25}, {3, 0, 25}};
        for (const auto &[row, column, offset] : places) {
            click(16 * row + column, false);
            QCOMPARE(m_edit->address(), offset);
        }
        // Bytes stay where they are, and in their run.
        QApplication::clipboard()->setText("41 42");
        for (const char *pressed :
             {"Ins 41", "Ctrl+End 41", "Del", "Backspace", "Shift+Left Del", "Ctrl+X"}) {
            m_edit->goTo(25);
            keys(pressed);
            QCOMPARE(m_edit->size(), 25);
        }
        while (m_edit->document().canUndo())
            m_edit->undo();
        m_edit->goTo(19);
        QtMessageTip::showTip(QString());
        m_edit->paste();
        QCOMPARE(content(), QByteArray("0123456789abcdefghijklmno"));
        QVERIFY(QtMessageTip::current()->text().contains("超出本段"));
        keys("41");
        m_edit->goTo(0);
        m_edit->paste();
        QCOMPARE(content(), QByteArray("AB23456789abcdefghiAklmno"));
    }

    // A plain file from an address of the user's, also while it grows.
    void showsAFirstAddress()
    {
        showData("0123");
        m_edit->setAddresses(HexAddressMap(0xFFFFFFFE));
        keys("Ins Ctrl+End 41");
        QCOMPARE(content(), QByteArray("0123A"));
        QCOMPARE(m_edit->shownAddress(m_edit->address()), qint64(0x100000003));
        keys("Up");
        QCOMPARE(m_edit->address(), 0);
        m_edit->setData("0");
        QCOMPARE(m_edit->shownAddress(0), 0);
    }

    void movesAndSelects()
    {
        const std::tuple<const char *, qint64, qint64> rows[] = {
            {"Home", 96, 0},
            {"End", 111, 0},
            {"Shift+End Shift+End", 100, 12}, // the rest of the row
            {"Up Up Down", 84, 0},
            {"Ctrl+Home Up", 0, 0},
            {"PgUp", 4, 0},
            {"PgDown PgUp", 100, 0},
            {"Ctrl+End Down", 1000, 0},
            {"Shift+Ctrl+Home", 0, 100},
            {"Shift+Ctrl+End", 100, 900},
            {"Shift+Down Shift+Left", 100, 15},
            {"Shift+Left Shift+Up", 83, 17},
            {"Ctrl+A", 0, 1000},
            {"Shift+Right Left", 100, 0},
        };
        showData(QByteArray(1000, 'x'));
        for (const auto &[pressed, begin, length] : rows) {
            m_edit->goTo(100);
            keys(pressed);
            QCOMPARE(m_edit->selectionBegin(), begin);
            QCOMPARE(m_edit->selectionLength(), length);
            checkDisplay();
        }
    }

    void selectsByMouse()
    {
        using Selection = std::pair<qint64, qint64>;
        const auto selection = [this] {
            return Selection(m_edit->selectionBegin(), m_edit->selectionLength());
        };
        const auto drag = [&](const QPoint &from, const QPoint &to) {
            QTest::mousePress(m_edit->viewport(), Qt::LeftButton, {}, from);
            QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, {});
            QApplication::sendEvent(m_edit->viewport(), &move);
            QTest::mouseRelease(m_edit->viewport(), Qt::LeftButton, {}, to);
            return selection();
        };
        showData(QByteArray(100, 'x'));
        click(18, false);
        QCOMPARE(selection(), Selection(18, 0));
        // Both ends belong to it, either way.
        QCOMPARE(drag(at(5, false), at(20, false)), Selection(5, 16));
        QCOMPARE(drag(at(20, true), at(5, true)), Selection(5, 16));
        const QPoint header(at(9, false).x(), 2); // nothing to click on
        QCOMPARE(drag(header, at(40, false)), Selection(5, 16));
        QTest::mouseDClick(m_edit->viewport(), Qt::LeftButton, {}, header);
        QCOMPARE(selection(), Selection(5, 16));
        QTest::mouseDClick(m_edit->viewport(), Qt::LeftButton, {}, at(18, false));
        QCOMPARE(selection(), Selection(18, 1));
        click(9, true);
        keys("Z"); // the text column was clicked
        QCOMPARE(content().mid(8, 3), QByteArray("xZx"));
        // The right digit of a byte.
        QTest::mouseClick(m_edit->viewport(), Qt::LeftButton, {},
                          at(9, false) + QPoint(m_edit->fontMetrics().horizontalAdvance('0'), 0));
        keys("b");
        QCOMPARE(content().mid(8, 3), QByteArray("x[x"));
        click(9, false);
        keys("7");
        QCOMPARE(content().mid(8, 3), QByteArray("x{x"));
        click(2, false);
        for (const auto &[end, expected] : {std::pair{6, Selection(2, 5)}, // the first byte stays
                                            {1, Selection(1, 2)},
                                            {0, Selection(0, 3)},
                                            {6, Selection(2, 5)}}) {
            click(end, false, Qt::ShiftModifier);
            QCOMPARE(selection(), expected);
        }
    }

    void keepsTheCaretInSight()
    {
        const auto isInSight = [this] {
            const QRect caret = m_edit->inputMethodQuery(Qt::ImCursorRectangle).toRect();
            return m_edit->viewport()->rect().contains(caret) &&
                   caret.top() >= caret.height(); // below the header
        };
        showData(QByteArray(10000, 'x'));
        for (const auto &[key, times] :
             {std::pair{"Down", 40}, {"Up", 40}, {"Ctrl+End", 1}, {"PgUp", 2}, {"PgDown", 1}})
            for (int i = 0; i < times; ++i) {
                keys(key);
                QVERIFY2(isInSight(), qPrintable(key + QString::number(i)));
            }
        m_edit->verticalScrollBar()->setValue(0);
        keys("4"); // far away
        QVERIFY(isInSight());
        m_edit->goTo(5000);
        const QVariant place = m_edit->inputMethodQuery(Qt::ImCursorRectangle);
        keys("PgDown"); // stays in its row of the display
        QCOMPARE(m_edit->inputMethodQuery(Qt::ImCursorRectangle), place);
        // Rows scroll by while the mouse is below them.
        keys("Ctrl+Home");
        QTest::mousePress(m_edit->viewport(), Qt::LeftButton, {}, at(0, false));
        QMouseEvent below(QEvent::MouseMove, QPointF(at(0, false).x(), m_edit->viewport()->height() + 5),
                          Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(m_edit->viewport(), &below);
        QTRY_VERIFY_WITH_TIMEOUT(m_edit->verticalScrollBar()->value() > 3, 30000);
        QTest::mouseRelease(m_edit->viewport(), Qt::LeftButton, {}, at(0, false));
        QVERIFY(isInSight() && m_edit->selectionBegin() == 0);
        auto *dispatcher = QAbstractEventDispatcher::instance(); // the hand is gone, and so is the timer
        QVERIFY(dispatcher->registeredTimers(m_edit->findChild<HexDrag *>()).isEmpty());
        m_edit->verticalScrollBar()->setValue(0);
    }

    void copiesAndPastes()
    {
        QClipboard *clipboard = QApplication::clipboard();
        showData("\x01\xAB"
                 "cd");
        m_edit->select(0, 2);
        m_edit->copy();
        QCOMPARE(clipboard->text(), QString("01 AB"));
        m_edit->select(2, 2);
        QCOMPARE(choose("复制为文本"),
                 QString("剪切|复制为十六进制|复制为文本|复制为|粘贴|删除||全选|文本列仅显示ASCII"));
        QCOMPARE(clipboard->text(), QString("cd"));
        m_edit->goTo(0);
        m_edit->setReadOnly(true, "because");
        QCOMPARE(choose("全选"), QString("复制为||全选|文本列仅显示ASCII"));
        QCOMPARE(m_edit->selectionLength(), qint64(4));
        m_edit->setReadOnly(false, QString());
        clipboard->setText(QString("0x31, 0x32"));
        m_edit->goTo(0);
        keys("Ctrl+C");
        QCOMPARE(QtMessageTip::current()->text(), QString("请先选中内容"));
        keys("Ctrl+V");
        QCOMPARE(content(), QByteArray("12cd")); // over, not between
        m_edit->setOverwrite(false);
        keys("Ctrl+V");
        QCOMPARE(content(), QByteArray("1212cd"));
        clipboard->setText(QString("no digits"));
        keys("Ctrl+V");
        QCOMPARE(content(), QByteArray("1212cd"));
        QVERIFY(QtMessageTip::current() && QtMessageTip::current()->isVisible());
        keys("Tab Ctrl+V Shift+Left Ctrl+X");
        QCOMPARE(content(), QByteArray("1212no digitcd"));
        QCOMPARE(clipboard->text(), QString("s"));
        m_edit->undo();
        m_edit->undo();
        QCOMPARE(content(), QByteArray("1212cd"));
    }

    // What is cut from one column and pasted into the other is what it was, and no
    // half of a character stays behind.
    void movesBytesExactly()
    {
        // What is selected, what is left, and the text for other programs.
        const std::tuple<QByteArray, int, bool, qint64, qint64, QByteArray, QString> rows[] = {
            {QByteArray("\x00\xff\x80\xc3z", 5), 0, true, 0, 4, "z",
             QString(QChar(0)) + QString(3, QChar(0xFFFD))},
            {"a\xCE\xC2\xB6\xC8z", 1, true, 2, 2, "az", "温度"},
            {"a\xCE\xC2\xB6\xC8z", 1, false, 2, 2, "a\xCE\xC8z", "C2 B6"},
            {"\xEF\xBB\xBF-2", 0, true, 0, 4, "2", QStringLiteral("\uFEFF-")},
        };
        for (const auto &[bytes, codec, inText, begin, length, left, text] : rows) {
            showData(bytes);
            m_edit->setTextCodec(codec);
            m_edit->setOverwrite(false);
            click(0, inText);
            m_edit->select(begin, length);
            QtMessageTip::showTip(QString());
            keys("Ctrl+X");
            QCOMPARE(QtMessageTip::current()->text().isEmpty(), !bytes.contains('\0')); // all text or not
            QCOMPARE(content(), left);
            QCOMPARE(QApplication::clipboard()->text(), text);
            keys(inText ? "Shift+Tab Ctrl+V" : "Tab Ctrl+V");
            QCOMPARE(content(), bytes);
        }
        // Text that the codec can't say is refused.
        m_edit->setTextCodec(0);
        click(0, true);
        const QByteArray before = content();
        for (const QString &text : {QString("a\uFFFD"), QString(QChar(0xD800)) + 'a', QString()}) {
            QtMessageTip::showTip(QString());
            QApplication::clipboard()->setText(text);
            keys("Ctrl+V");
            QCOMPARE(content(), before);
            QVERIFY(!QtMessageTip::current()->text().isEmpty());
        }
        QApplication::clipboard()->setText(QString("\U0001F600"));
        keys("Ctrl+V");
        QCOMPARE(content(), "\xF0\x9F\x98\x80" + before);
    }

    // It arrives where the caret was, and nothing is edited before.
    void pastesLongTextInSlices()
    {
        const int count = 6 << 20; // more than fits into the first slice
        showData("0123");
        keys("Ins Right");
        QApplication::clipboard()->setText(QString("41 ").repeated(count));
        keys("Ctrl+V");
        QVERIFY(m_edit->task()->isRunning());
        QtMessageTip::showTip(QString());
        keys("Right Del");
        QVERIFY(!QtMessageTip::current()->text().isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(!m_edit->task()->isRunning(), 60000);
        QCOMPARE(content(), "0" + QByteArray(count, 'A') + "123");
        showData(QByteArray((16 << 20) + 1, 'x'));
        keys("Ins Ctrl+A Ctrl+X");
        QVERIFY(QtMessageTip::current()->text().contains("超过16 MB") && m_edit->size() == (16 << 20) + 1);
    }

    void takesChineseInTheTextColumn()
    {
        const auto commit = [this](const QString &text) {
            QInputMethodEvent event;
            event.setCommitString(text);
            QApplication::sendEvent(m_edit.get(), &event);
        };
        showData("......");
        const auto isEnabled = [this] { return m_edit->inputMethodQuery(Qt::ImEnabled).toBool(); };
        QVERIFY(!m_edit->testAttribute(Qt::WA_InputMethodEnabled) && !isEnabled()); // digits go straight in
        click(0, true);
        QVERIFY(m_edit->testAttribute(Qt::WA_InputMethodEnabled) && isEnabled());
        m_edit->setTextCodec(1);
        commit(QString("中"));
        QCOMPARE(content(), QByteArray("\xD6\xD0...."));
        m_edit->setTextCodec(0);
        commit(QString("中"));
        QCOMPARE(content(), QByteArray("\xD6\xD0\xE4\xB8\xAD."));
        QVERIFY(m_edit->inputMethodQuery(Qt::ImCursorRectangle).toRect().contains(at(5, true)));
        m_edit->setReadOnly(true, QString());
        QVERIFY(!isEnabled());
    }

    // Over two cells, at the first byte's, far from the caret.
    void drawsCharactersOfTheCodec()
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
        m_edit->selectTo(6, 2);
        const QImage both = cells(2);
        m_edit->selectTo(4, 2);
        QCOMPARE(cells(2), both); // whatever follows
        QCOMPARE(m_edit->viewport()->grab().toImage().pixel(layout().text(1, 2).topLeft() + QPoint(-1, 3)),
                 QColor(Skin::palette().secondaryText).rgb());
        m_edit->resize(1800, 400);
        m_edit->zoom(10);
        m_edit->selectTo(3, 2); // half of it, which has both colors
        const QImage half = cells(2);
        QString seen;
        for (int i = 0, width = half.width(); i < width * half.height(); ++i)
            if (half.pixelColor(i % width, i / width) == QColor(Skin::palette().text))
                seen += 2 * (i % width) < width ? "left" : "right";
        QVERIFY(seen.contains("right") && !seen.contains("left"));
        m_edit->zoom(0);
        choose("文本列仅显示ASCII");
        m_edit->goTo(0);
        QCOMPARE(cells(2), dots);
    }

    void zooms()
    {
        const auto size = [this] { return layout().cellWidth(); };
        const int first = size();
        QTest::keyClick(m_edit.get(), Qt::Key_Equal, Qt::ControlModifier);
        const int larger = size();
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(m_edit.get(), Qt::Key_Minus, Qt::ControlModifier);
        QVERIFY(larger > first && size() < first);
        QTest::keyClick(m_edit.get(), Qt::Key_0, Qt::ControlModifier);
        QCOMPARE(size(), first);
        showData(QByteArray(1600, 'x'));
        const qreal usual = m_edit->font().pointSizeF();
        const auto turn = [this](int angle, Qt::KeyboardModifiers modifiers) {
            const QPointF middle = m_edit->viewport()->rect().center();
            QWheelEvent event(middle, m_edit->mapToGlobal(middle.toPoint()), {}, {0, angle}, Qt::NoButton,
                              modifiers, Qt::NoScrollPhase, false);
            QApplication::sendEvent(m_edit->viewport(), &event);
            const QRect caret = m_edit->inputMethodQuery(Qt::ImCursorRectangle).toRect();
            return caret.height() == layout().rowHeight() ? m_edit->font().pointSizeF() : 0;
        };
        QCOMPARE(turn(-120, {}), usual);
        QVERIFY(m_edit->verticalScrollBar()->value() > 0);
        QCOMPARE(turn(120, {}), usual);
        QCOMPARE(turn(120, Qt::ControlModifier), usual + 1);
        QCOMPARE(turn(-120, Qt::ControlModifier), usual);
        QCOMPARE(turn(0, Qt::ControlModifier), usual);
        m_edit->zoom(99);
        QCOMPARE(m_edit->font().pointSizeF(), usual + 16);
        m_edit->zoom(-99);
        QCOMPARE(m_edit->font().pointSizeF(), usual - 4);
        m_edit->zoom(0);
        QCOMPARE(m_edit->font().pointSizeF(), usual);

        m_edit->resize(300, 200); // sideways, all columns move
        QVERIFY(QTest::qWaitForWindowActive(m_edit.get()));
        auto *bar = m_edit->horizontalScrollBar();
        QCOMPARE(bar->maximum(), layout().width() - m_edit->viewport()->width());
        const auto columns = [this](int left) {
            return m_edit->viewport()->grab({left, 0, 200, 100}).toImage();
        };
        const QImage before = columns(20);
        QVERIFY(repaints(m_edit->viewport(), [bar] { bar->setValue(20); }));
        QCOMPARE(columns(0), before);
    }

    void paintsStates()
    {
        const SkinPalette &skin = Skin::palette();
        const QRgb accent = QColor(skin.accent).rgb(), panel = QColor(skin.panel).rgb();
        const QRgb text = QColor(skin.text).rgb(), onAccent = QColor(Qt::black).rgb();
        m_edit->resize(1800, 400);
        m_edit->zoom(10); // strokes that are wider than a pixel
        showData(QByteArray(64, 'H'));
        QVERIFY(QTest::qWaitForWindowActive(m_edit.get()));
        keys("4A");           // byte 0 is changed
        m_edit->select(3, 2); // and the caret is at 5
        QImage image = m_edit->viewport()->grab().toImage();
        const HexLayout places = layout();
        const auto colors = [&image](const QRect &cell) {
            QSet<QRgb> found;
            for (int i = 0; i < cell.width() * cell.height(); ++i)
                found += image.pixel(cell.topLeft() + QPoint(i % cell.width(), i / cell.width()));
            return found;
        };
        for (const bool inText : {false, true}) {
            const auto cell = [&](int i) { return colors(inText ? places.text(1, i) : places.hex(1, i)); };
            QVERIFY(cell(2).contains(text) && cell(2).contains(panel));
            QVERIFY(cell(0).contains(text) && !cell(0).contains(panel) && !cell(0).contains(accent));
            for (const int i : {3, 4})
                QVERIFY(cell(i).contains(accent) && cell(i).contains(onAccent) && !cell(i).contains(text));
        }
        for (const auto &[byte, color] : {std::pair{0, text}, {3, accent}}) // changed or selected, not both
            QCOMPARE(image.pixel(places.hex(1, byte).bottomLeft()) == color, byte == 3);
        const auto ground = [&image](const QRect &cell) {
            return image.pixel(cell.topLeft() + QPoint(1, 1));
        };
        QCOMPARE(ground(places.hex(1, 4).translated(-4, 0)), accent); // no gap in a selection
        QCOMPARE(ground(places.hex(1, 5).translated(-4, 0)), panel);
        QVERIFY(ground(places.hex(0, 5)) != ground(places.hex(0, 6))); // the caret's column and row
        QVERIFY(ground(places.address(1)) != ground(places.address(2)));
        QCOMPARE(ground(places.address(5)), ground(places.address(2))); // of bytes to come
        QVERIFY(colors(places.hex(0, 0)).size() > 1);                   // has its number
        QVERIFY(colors(places.address(0)).contains(QColor(skin.secondaryText).rgb()));
        const QImage two = image.copy(places.address(2)), three = image.copy(places.address(3));
        int first = two.width(), last = -1; // that differ: 20 and 30
        for (int i = 0; i < two.width() * two.height(); ++i)
            if (const int x = i % two.width();
                two.pixel(x, i / two.width()) != three.pixel(x, i / two.width())) {
                first = qMin(first, x);
                last = qMax(last, x);
            }
        QVERIFY(first <= last && last - first < places.cellWidth());
        const QRect caret = places.hex(1, 5);
        const QPoint below = caret.bottomLeft() + QPoint(1, -1), left = caret.topLeft() + QPoint(0, 3);
        QVERIFY(image.pixel(below) == text && image.pixel(left) == panel);
        QCOMPARE(image.pixel(places.text(1, 5).topLeft() + QPoint(-1, 3)), QColor(skin.secondaryText).rgb());
        keys("Ins");
        image = m_edit->viewport()->grab().toImage();
        QVERIFY(image.pixel(below) == panel && image.pixel(left) == text);
        keys("Ins 4");
        const auto now = [&](const QPoint &point) {
            return m_edit->viewport()->grab().toImage().pixel(point);
        };
        const QPoint digit =
            places.hex(1, 3).bottomLeft() + QPoint(places.cellWidth() + 1, -1); // the right one
        QVERIFY(now(digit) == text && now(digit - QPoint(places.cellWidth(), 0)) == panel);
        m_edit->clearFocus();
        QVERIFY(now(digit) != text);
        QApplication::setCursorFlashTime(20);
        m_edit->setFocus();
        for (const bool isOn : {false, true})
            QTRY_COMPARE_WITH_TIMEOUT(now(digit) == text, isOn, 30000);
        QApplication::setCursorFlashTime(0);
        m_edit->clearFocus();
        image = m_edit->grab().toImage();
        m_edit->setReadOnly(true, QString());
        m_edit->setPlaceholderText("nothing to see");
        QCOMPARE(m_edit->grab().toImage(), image);
        m_edit->select(0, 1); // what is selected is still visible as changed
        image = m_edit->viewport()->grab().toImage();
        for (const QRect &cell : {places.hex(1, 0), places.text(1, 0)})
            QCOMPARE(image.pixel(cell.bottomLeft() + QPoint(1, 0)), onAccent);
        m_edit->setData({});
        QCOMPARE(now({1, 1}), panel); // no header
    }

    // More than a scroll bar of bytes could hold, or an int.
    void takesThreeGigabytes()
    {
        const QByteArray block(64 << 20, 'x'); // shared: three gigabytes cost 64 MB
        for (int i = 0; i < 48; ++i)
            m_edit->appendData(block);
        QCOMPARE(m_edit->size(), qint64(48) * (64 << 20));
        keys("Ctrl+End PgUp 41");
        QVERIFY(m_edit->address() > (qint64(3) << 30) - 1000);
        QCOMPARE(m_edit->verticalScrollBar()->maximum() / 1000, (3 << 26) / 1000);
    }

private:
    // "A1 Ins Left Shift+Right ..."; what is no key's name is typed.
    void keys(const QString &names)
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
    void checkDisplay()
    {
        QTRY_COMPARE(m_edit->screen()->grabWindow(m_edit->winId()).toImage(), m_edit->grab().toImage());
    }

    // In the context menu. What else it offers.
    QString choose(const QString &text)
    {
        QStringList possible;
        QTimer::singleShot(0, this, [text, &possible] {
            QWidget *menu = QApplication::activePopupWidget();
            for (QAction *action : menu->actions()) {
                if (action->isEnabled())
                    possible += action->text();
                if (action->text() == text)
                    action->trigger();
            }
            menu->close();
        });
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, m_edit->mapToGlobal({}));
        QApplication::sendEvent(m_edit->viewport(), &event);
        return possible.join('|');
    }

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
    HexLayout layout() const
    {
        HexLayout layout;
        layout.update(m_edit->fontMetrics(), m_edit->size(), 16);
        return layout;
    }
    // The middle of a byte's left digit, or of its character.
    QPoint at(qint64 address, bool inText) const
    {
        const int row = static_cast<int>(address / 16) + 1; // below the header
        const int column = static_cast<int>(address % 16);
        const QRect cell = inText ? layout().text(row, column) : layout().hex(row, column);
        return {cell.left() + layout().cellWidth() / 2, cell.center().y()};
    }
    void click(qint64 address, bool inText, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseClick(m_edit->viewport(), Qt::LeftButton, modifiers, at(address, inText));
    }

    std::unique_ptr<QHexEdit> m_edit;
};

QTEST_MAIN(TestQHexEdit)
#include "test_qhexedit.moc"
