// Page bar, tip, spinner, rolling text, fields and the configuration panel.

#include "baudratebox.h"
#include "buttonrole.h"
#include "fieldbehavior.h"
#include "formpanel.h"
#include "portcombobox.h"
#include "qtmessagetip.h"
#include "qtpagebar.h"
#include "qtrollsubtitleswidget.h"
#include "repaints.h"
#include "stateindicator.h"
#include "waitingspinnerwidget.h"

#include <QtTest/qtestspontaneevent.h>
#include <QtTest>
#include <QtWidgets>

namespace {

// As from the window system: other events are not handed to the parents.
void turnWheel(QWidget *widget)
{
    const QPoint place = widget->rect().center();
    QWheelEvent event(place, widget->mapToGlobal(place), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(widget, &event); // sendEvent() would clear the mark
}

} // namespace

class BaseTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bar = std::make_unique<QtPageBar>();
        m_signals.clear();
        connect(m_bar.get(), &QtPageBar::signalChangePage, this,
                [this](int page) { m_signals += QString("page %1;").arg(page); });
        connect(m_bar.get(), &QtPageBar::deletePage, this,
                [this](int page, int count) { m_signals += QString("delete %1 %2;").arg(page).arg(count); });
        connect(m_bar.get(), &QtPageBar::addPage, this,
                [this](int count) { m_signals += QString("add %1;").arg(count); });
    }
    void cleanup()
    {
        if (QtMessageTip::current())
            QtMessageTip::current()->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void pageBarNavigates()
    {
        for (const char *button : {"btnFirstPage", "btnPrevPage", "btnNextPage", "btnPrevPage", "btnLastPage",
                                   "btnLastPage", "btnNextPage", "btnPrevPage", "btnFirstPage"})
            m_bar->findChild<QPushButton *>(button)->click();
        QCOMPARE(taken(), QString("page 2;page 1;page 5;page 4;page 1;")); // nothing at an end
        for (const int page : {5, 6, 0, 1, 3})
            m_bar->setCurrentPage(page);
        QCOMPARE(taken(), QString("page 5;page 1;page 3;"));
        QCOMPARE(pageEdit()->text(), QString("3"));
        QCOMPARE(m_bar->findChild<QLabel *>("pageCount")->text(), QString("/ 5"));
    }

    void pageBarAddsAndDeletes()
    {
        m_bar->SltJumpLastPage();
        m_bar->SltDeleteCurrentPage();
        QCOMPARE(taken(), QString("page 5;page 4;delete 4 4;"));
        QCOMPARE(m_bar->findChild<QLabel *>("pageCount")->text(), QString("/ 4"));
        m_bar->SltPrevPage();
        m_bar->SltDeleteCurrentPage();
        QCOMPARE(taken(), QString("page 3;delete 3 3;"));
        m_bar->reset(2);
        m_bar->SltDeleteCurrentPage();
        m_bar->SltDeleteCurrentPage(); // not the last one
        QCOMPARE(taken(), QString("delete 1 1;"));
        for (int i = 0; i < 100; ++i)
            m_bar->SltAddNewPage();
        QVERIFY(taken().endsWith("add 99;add 100;add 100;")); // no more than that
        const auto *label = m_bar->findChild<QLabel *>("pageCount");
        QCOMPARE(label->text(), QString("/ 100"));
        QVERIFY(label->fontMetrics().horizontalAdvance(label->text()) <= label->width());
    }

    void pageBarJumpsByNumber()
    {
        m_bar->reset(12);
        m_bar->show();
        pageEdit()->selectAll();
        QTest::keyClicks(pageEdit(), "1a2x3"); // digits only, two at most
        QTest::keyClick(pageEdit(), Qt::Key_Return);
        QCOMPARE(taken(), QString("page 12;"));
        QVERIFY(!QtMessageTip::current());
        for (const char *wrong : {"13", "0", ""}) {
            pageEdit()->setText(wrong);
            QTest::keyClick(pageEdit(), Qt::Key_Return);
            m_bar->SltJumpPage();
            QVERIFY(taken().isEmpty() && m_bar->currentPage() == 12);
            QVERIFY(QtMessageTip::current()->isVisible());
            QCOMPARE(QtMessageTip::current()->text(), QString("当前设置超出范围！"));
            QtMessageTip::current()->sltTimeOut();
        }
    }

    void tipIsReused()
    {
        QtMessageTip::showTip("第一个", 60000);
        const QPointer<QtMessageTip> tip = QtMessageTip::current();
        QCOMPARE(tip->size(), QSize(tip->fontMetrics().horizontalAdvance("第一个") + 20,
                                    tip->fontMetrics().height() + 25));
        QtMessageTip::showTipAt("较长的第二个提示", {40, 50}, 90000);
        QCOMPARE(QtMessageTip::current(), tip.data());
        QCOMPARE(tip->text(), QString("较长的第二个提示"));
        QCOMPARE(tip->tipStyle(), QtMessageTip::Bubble);
        QCOMPARE(tip->pos(), QPoint(40, 50));
        QVERIFY(tip->remainingTime() > 60000);
        QtMessageTip::showTip("再来", 1);
        QTRY_VERIFY_WITH_TIMEOUT(!tip->isVisible(), 30000); // by its own timer
        QCOMPARE(tip->remainingTime(), -1);
        QWidget elsewhere;
        for (const auto style : {QtMessageTip::Notice, QtMessageTip::Bubble}) {
            QtMessageTip::showTipAt("挡住", {40, 50}, 60000, style);
            QTest::mousePress(&elsewhere, Qt::LeftButton, {}, {700, 500});
            QCOMPARE(tip->isVisible(), style == QtMessageTip::Notice);
        }
        tip->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!tip);
        QtMessageTip::showTip("新的");
        QVERIFY(QtMessageTip::current()->isVisible());
    }

    void tipLooks()
    {
        const QColor ground("#f03e10");
        QtMessageTip::showTipAt("提示提示提示", {0, 0});
        QImage image = QtMessageTip::current()->grab().toImage().convertToFormat(QImage::Format_ARGB32);
        QCOMPARE(image.pixelColor(1 + 15, 6), ground); // the pointer
        QCOMPARE(image.pixelColor(40, 6).alpha(), 0);
        QCOMPARE(image.pixelColor(40, 11), ground);
        QVERIFY(has(image, Qt::white));
        QtMessageTip::showTip("提示提示提示");
        image = QtMessageTip::current()->grab().toImage();
        QCOMPARE(image.pixelColor(6, image.height() / 2), QColor("#252526"));
        QVERIFY(has(image, "#f2f2f2"));
        QVERIFY(image.pixelColor(40, 2).lightness() > QColor("#303030").lightness()); // the border
        QtMessageTip *const tip = QtMessageTip::current();
        QVERIFY(repaints(tip, [tip] { QtMessageTip::showTip(QString(tip->text()).replace("示", "醒")); }));
        const QRegion shape = QtMessageTip::current()->mask();
        QVERIFY(shape.contains(image.rect().center()) && !shape.contains(QPoint(0, 0)));
    }

    void spinnerTurns()
    {
        WaitingSpinnerWidget spinner;
        const QImage before = spinner.grab().toImage();
        QCOMPARE(lines(before), 12);
        spinner.rotate();
        QVERIFY(spinner.grab().toImage() != before);
        for (int i = 0; i < 11; ++i)
            spinner.rotate();
        QCOMPARE(spinner.grab().toImage(), before);
        spinner.show();
        QVERIFY(repaints(&spinner, [&spinner] { spinner.rotate(); }));
        spinner.start();
        QTRY_VERIFY_WITH_TIMEOUT(spinner.position() > 0, 30000);
        spinner.stop();
        QVERIFY(!spinner.isSpinning());
    }

    void subtitlesRollWhenTooWide()
    {
        QtRollSubtitlesWidget line;
        line.resize(120, 24);
        line.show();
        line.setText("短");
        QVERIFY(!line.isRolling() && line.toolTip() == "短");
        line.setText("这是一段比窗口部件宽得多的滚动文字，需要滚动才能看完");
        QTRY_VERIFY_WITH_TIMEOUT(line.isRolling() && line.offset() >= 2, 30000);
        line.setText(line.toolTip() + "。");
        QCOMPARE(line.offset(), 0);
        line.resize(2000, 24);
        QTRY_VERIFY_WITH_TIMEOUT(!line.isRolling(), 30000);
        QCOMPARE(line.offset(), 0);
        line.resize(120, 24);
        QTRY_VERIFY_WITH_TIMEOUT(line.isRolling(), 30000);
        line.hide();
        QVERIFY(!line.isRolling());
        line.setText(line.toolTip() + "。");
        QVERIFY(!line.isRolling());
        line.show();
        QVERIFY(line.isRolling());
        QVERIFY(repaints(&line, [&line] { line.setText("短"); }));
        QVERIFY(!line.isRolling());
    }

    // A ring, a disc, a ring and a cross, each in its color.
    void indicatesStates()
    {
        StateIndicator indicator;
        QCOMPARE(indicator.toolTip(), QString("已关闭"));
        indicator.resize(16, 16);
        indicator.show();
        QString seen;
        for (const auto state :
             {StateIndicator::On, StateIndicator::Off, StateIndicator::Busy, StateIndicator::Failed}) {
            QVERIFY(repaints(&indicator, [&] { indicator.setState(state, "tip"); }));
            const QImage image = indicator.grab().toImage();
            const QRgb ground = image.pixel(0, 0);
            for (const QPoint &point : {QPoint(8, 8), QPoint(8, 3), QPoint(4, 4), QPoint(11, 5)}) {
                const int hue = image.pixelColor(point).hue();
                const char *color = hue < 0 ? "w" : hue < 30 ? "r" : hue < 60 ? "o" : "g";
                seen += image.pixel(point) == ground ? "-" : color;
            }
            seen += ' ';
        }
        QCOMPARE(seen, QString("gggg -www -ooo r-rr "));
        QCOMPARE(indicator.toolTip(), QString("tip"));
    }

    void marksThePrimaryButton()
    {
        QPushButton button;
        for (const bool primary : {true, false}) {
            ButtonRole::setPrimary(&button, primary);
            QCOMPARE(button.property("primary").toBool(), primary);
        }
    }

    void acceptsRates()
    {
        BaudRateBox box("9600 115200", nullptr);
        for (const auto &[text, rate] :
             {std::pair{"0", 0}, {"-5", 0}, {"100000000", 100000000}, {"100000001", 0}, {"1", 1}}) {
            box.setCurrentText(text);
            QCOMPARE(box.baudRate(), rate);
        }
        QVERIFY(!box.completer()); // 250000 must not become 2500000
        QString steps;
        for (const auto key :
             {Qt::Key_Down, Qt::Key_F2, Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_Up}) {
            QTest::keyClick(&box, key);
            steps += box.currentText() + ' ';
        }
        QCOMPARE(steps, QString("9600 9600 115200 115200 9600 9600 "));
        box.setCurrentText("999999");
        QTest::keyClick(&box, Qt::Key_Up);
        QCOMPARE(box.currentText(), QString("115200"));
        box.show();
        for (const int y : {120, 0, -120}) {
            QWheelEvent turn({5, 5}, box.mapToGlobal({5, 5}), {}, {0, y}, {}, {}, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(&box, &turn);
            QCOMPARE(box.currentText(), QString(y < 0 ? "115200" : "9600"));
        }
        box.setCurrentText("9600"); // typed, and marked in the list
        box.showPopup();
        QVERIFY(box.view()->isVisible() && box.view()->currentIndex().row() == 0);
        box.hidePopup();
    }

    void choosesAPortAgainThatIsBack()
    {
        const QStringList without{"COM1 ", "COM2 modem"};
        const QStringList with = without + QStringList("COM6 board");
        PortComboBox ports;
        ports.setPorts(with);
        ports.setCurrentIndex(2);
        for (const QStringList &none : {without, QStringList()}) {
            ports.setPorts(none);
            ports.setPorts(with);
            QCOMPARE(ports.currentText(), "COM6 board");
            QCOMPARE(ports.lineEdit()->cursorPosition(), 0); // a long entry shows its beginning
        }
        // Not while the one that it fell back to is open.
        ports.setPorts(without);
        ports.setEnabled(false);
        ports.setPorts(with);
        QCOMPARE(ports.currentText(), "COM1 ");
        ports.setEnabled(true);
        ports.setCurrentIndex(2);
        // Not where the user has chosen another, be it the one the list fell back to.
        ports.setPorts(without);
        QTest::keyClick(&ports, Qt::Key_Down);
        QTest::keyClick(&ports, Qt::Key_Up);
        ports.setPorts(with);
        QCOMPARE(ports.currentText(), "COM1 ");
        ports.setEditText("COM7"); // a typed one stays, and is no entry of the list
        QTest::keyClick(ports.lineEdit(), Qt::Key_Return);
        ports.setPorts(without);
        QCOMPARE(ports.currentText(), "COM7");
        QCOMPARE(ports.count(), 2);
        QCOMPARE(ports.lineEdit()->palette().color(QPalette::PlaceholderText).alpha(), 178);
        ports.setPalette(QPalette(Qt::red, Qt::red, {}, {}, {}, Qt::red, {}));
        QCOMPARE(ports.lineEdit()->palette().color(QPalette::PlaceholderText), QColor(255, 0, 0, 178));
    }

    void panelMakesRoomForItsScrollBar()
    {
        QWidget window;
        auto *outside = new QPushButton(&window);
        FormPanel panel(&window);
        QCOMPARE(panel.maximumWidth(), FormPanel::panelWidth);
        FormGroup *group = panel.addGroup("端口");
        auto *field = new QComboBox;
        QCOMPARE(group->addRow("波特率", field)->buddy(), field);
        auto *hint = new QLineEdit;
        group->addRow("提示", hint);
        QCOMPARE(hint->palette().color(QPalette::PlaceholderText).alpha(), 178);
        for (int i = 0; i < 12; ++i)
            group->addWide(new QPushButton("按钮"));
        panel.resize(FormPanel::panelWidth, 200);
        window.resize(400, 1000);
        window.show();
        QTRY_VERIFY_WITH_TIMEOUT(panel.width() > FormPanel::panelWidth, 30000);
        QTRY_VERIFY_WITH_TIMEOUT(group->geometry().right() < panel.viewport()->width(), 30000);
        QVERIFY(group->width() >= group->minimumSizeHint().width());
        // The keyboard comes from outside to a field that is scrolled away.
        QApplication::setActiveWindow(&window);
        QVERIFY(QTest::qWaitForWindowActive(&window, 30000));
        outside->setFocus();
        panel.verticalScrollBar()->setValue(panel.verticalScrollBar()->maximum());
        QVERIFY(field->visibleRegion().isEmpty());
        field->setFocus(Qt::TabFocusReason);
        QCOMPARE(field->visibleRegion().boundingRect(), field->rect());
        const int cut = field->mapTo(panel.widget(), QPoint(0, 8)).y(); // a part is in sight
        for (QWidget *next : std::initializer_list<QWidget *>{outside, field}) {
            panel.verticalScrollBar()->setValue(cut);
            next->setFocus();
            QCOMPARE(panel.verticalScrollBar()->value(), cut);
        }
        panel.resize(panel.width(), 1000);
        QTRY_COMPARE_WITH_TIMEOUT(panel.width(), FormPanel::panelWidth, 30000);
    }

    void wheelScrollsThePanelAndChangesNoFieldBelowThePointer()
    {
        FieldBehavior::install();
        FormPanel panel;
        FormGroup *group = panel.addGroup("端口");
        auto *fixed = new QComboBox;
        auto *editable = new QComboBox;
        auto *spin = new QSpinBox;
        auto *slider = new QSlider(Qt::Horizontal);
        for (QComboBox *box : {fixed, editable})
            box->addItems({"1", "2", "3"});
        for (QWidget *field : std::initializer_list<QWidget *>{fixed, editable, spin, slider})
            group->addRow("值", field);
        editable->setEditable(true);
        spin->setValue(5);
        for (int i = 0; i < 20; ++i)
            group->addWide(new QPushButton("按钮"));
        panel.resize(FormPanel::panelWidth, 200);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        const auto values = [&] {
            return QList<int>{fixed->currentIndex(), editable->currentIndex(), spin->value(),
                              slider->value()};
        };
        QScrollBar *bar = panel.verticalScrollBar();
        for (QWidget *field :
             std::initializer_list<QWidget *>{fixed, editable, editable->lineEdit(), spin, slider}) {
            bar->setValue(0);
            turnWheel(field);
            QCOMPARE(values(), QList<int>({0, 0, 5, 0}));
            QVERIFY2(bar->value() > 0, field->metaObject()->className());
        }
        QApplication::setActiveWindow(&panel);
        QVERIFY(QTest::qWaitForWindowActive(&panel));
        for (QWidget *field : std::initializer_list<QWidget *>{fixed, spin}) {
            field->setFocus();
            turnWheel(field);
        }
        QCOMPARE(values(), QList<int>({0, 0, 4, 0}));
        // Both lists have rows of one height.
        qApp->setStyleSheet("QComboBox { combobox-popup: 0; }"
                            "QComboBox QAbstractItemView::item { min-height: 31px; }");
        for (QComboBox *box : {fixed, editable}) {
            box->showPopup();
            QCOMPARE(box->view()->visualRect(box->model()->index(0, 0)).height(), 31);
            box->hidePopup();
        }
        qApp->setStyleSheet({});
        FormGroup *last = panel.addGroup("组播");
        last->addWide(new QPushButton("按钮"));
        last->setFoldable();
        QCoreApplication::processEvents();
        bar->setValue(0);
        last->setChecked(true);
        QTRY_VERIFY(bar->value() > 0); // comes into view
        panel.widget()->setMaximumHeight(50);
        QTRY_VERIFY(!bar->isEnabled()); // and so without a handle
    }

private:
    static bool has(const QImage &image, const QColor &color)
    {
        for (int i = 0; i < image.width() * image.height(); ++i)
            if (image.pixelColor(i % image.width(), i / image.width()) == color)
                return true;
        return false;
    }
    // How many of the spinner's lines are painted.
    static int lines(const QImage &image)
    {
        int count = 0;
        for (int i = 0; i < 12; ++i) {
            const QPointF end = QLineF::fromPolar(14, 90 + 30 * i).p2();
            count += image.pixel((QPointF(image.rect().center()) + end).toPoint()) != image.pixel(0, 0);
        }
        return count;
    }
    QLineEdit *pageEdit() { return m_bar->findChild<QLineEdit *>("pageEdit"); }
    QString taken() { return std::exchange(m_signals, QString()); }

    std::unique_ptr<QtPageBar> m_bar;
    QString m_signals; // of the page bar, in order
};

QTEST_MAIN(BaseTest)
#include "test_base.moc"
