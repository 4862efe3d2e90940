// Page bar, tip, spinner, rolling text, fields and the configuration panel.

#include "fieldbehavior.h"
#include "formpanel.h"
#include "qtmessagetip.h"
#include "qtpagebar.h"
#include "qtrollsubtitleswidget.h"
#include "waitingspinnerwidget.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>
#include <QtTest/qtestspontaneevent.h>

namespace {

// All signals of a page bar, in the order in which they came.
class Record : public QObject
{
public:
    explicit Record(QtPageBar &bar)
    {
        connect(&bar, &QtPageBar::signalChangePage, this,
                [this](int page) { log += QStringLiteral("page %1;").arg(page); });
        connect(&bar, &QtPageBar::deletePage, this,
                [this](int page, int count) { log += QStringLiteral("delete %1 %2;").arg(page).arg(count); });
        connect(&bar, &QtPageBar::addPage, this,
                [this](int count) { log += QStringLiteral("add %1;").arg(count); });
    }
    QString take() { return std::exchange(log, QString()); }
    QString log;
};

QLineEdit *edit(QtPageBar &bar)
{
    return bar.findChild<QLineEdit *>(QStringLiteral("pageEdit"));
}

QString countText(QtPageBar &bar)
{
    return bar.findChild<QLabel *>(QStringLiteral("pageCount"))->text();
}

void press(QtPageBar &bar, const char *name)
{
    QTest::mouseClick(bar.findChild<QPushButton *>(QLatin1String(name)), Qt::LeftButton);
}

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
    void cleanup()
    {
        if (QtMessageTip::current())
            QtMessageTip::current()->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void pageBarStarts()
    {
        QtPageBar bar;
        QCOMPARE(bar.currentPage(), 1);
        QCOMPARE(bar.pageCount(), 5);
        QCOMPARE(edit(bar)->text(), QStringLiteral("1"));
        QCOMPARE(countText(bar), QStringLiteral("/ 5"));
        QCOMPARE(edit(bar)->size(), QSize(24, 22));
        QCOMPARE(bar.findChild<QLabel *>(QStringLiteral("pageCount"))->size(), QSize(24, 22));
        QCOMPARE(bar.layout()->contentsMargins(), QMargins(5, 5, 0, 5));
        QCOMPARE(bar.layout()->spacing(), 10);
        QStringList captions;
        for (int i = 0; i < bar.layout()->count(); ++i) {
            QWidget *widget = bar.layout()->itemAt(i)->widget();
            if (auto *button = qobject_cast<QPushButton *>(widget))
                captions += button->text();
            else
                captions += widget ? widget->objectName() : QStringLiteral("stretch");
        }
        QCOMPARE(
            captions,
            QStringList({QStringLiteral("stretch"), QStringLiteral("添加一页"), QStringLiteral("删除当前页"),
                         QStringLiteral("首页"), QStringLiteral("<"), QStringLiteral("pageEdit"),
                         QStringLiteral("pageCount"), QStringLiteral(">"), QStringLiteral("尾页")}));
    }

    void pageBarNavigates()
    {
        QtPageBar bar;
        Record record(bar);
        press(bar, "btnFirstPage");
        press(bar, "btnPrevPage");
        QCOMPARE(record.take(), QString());
        press(bar, "btnNextPage");
        press(bar, "btnLastPage");
        press(bar, "btnLastPage");
        press(bar, "btnNextPage");
        QCOMPARE(record.take(), QStringLiteral("page 2;page 5;"));
        press(bar, "btnPrevPage");
        press(bar, "btnFirstPage");
        QCOMPARE(record.take(), QStringLiteral("page 4;page 1;"));
        QCOMPARE(edit(bar)->text(), QStringLiteral("1"));
    }

    void pageBarAddsAndDeletes()
    {
        QtPageBar bar;
        Record record(bar);
        bar.SltJumpLastPage();
        bar.SltDeleteCurrentPage();
        QCOMPARE(record.take(), QStringLiteral("page 5;page 4;delete 4 4;"));
        QCOMPARE(countText(bar), QStringLiteral("/ 4"));
        bar.SltPrevPage();
        bar.SltDeleteCurrentPage();
        QCOMPARE(record.take(), QStringLiteral("page 3;delete 3 3;"));
        bar.SltJumpFirshPage();
        bar.SltDeleteCurrentPage();
        bar.SltDeleteCurrentPage();
        record.take();
        QCOMPARE(bar.pageCount(), 1);
        bar.SltDeleteCurrentPage();
        QCOMPARE(record.take(), QString());

        for (int i = 0; i < 99; ++i)
            bar.SltAddNewPage();
        QVERIFY(record.take().endsWith(QStringLiteral("add 99;add 100;")));
        bar.SltAddNewPage();
        QCOMPARE(record.take(), QStringLiteral("add 100;"));
        QCOMPARE(countText(bar), QStringLiteral("/ 100"));
        auto *label = bar.findChild<QLabel *>(QStringLiteral("pageCount"));
        QVERIFY(label->fontMetrics().horizontalAdvance(label->text()) <= label->width());
        bar.SltJumpLastPage();
        QCOMPARE(edit(bar)->text(), QStringLiteral("100"));
    }

    void pageBarJumpsByNumber()
    {
        QtPageBar bar;
        bar.reset(12);
        bar.show();
        Record record(bar);
        edit(bar)->selectAll();
        QTest::keyClicks(edit(bar), QStringLiteral("1a2x3")); // digits only, two at most
        QCOMPARE(edit(bar)->text(), QStringLiteral("12"));
        QTest::keyClick(edit(bar), Qt::Key_Return);
        QCOMPARE(record.take(), QStringLiteral("page 12;"));
        QVERIFY(!QtMessageTip::current());

        for (const auto *wrong : {"13", "0"}) {
            edit(bar)->setText(QLatin1String(wrong));
            QTest::keyClick(edit(bar), Qt::Key_Return);
            QCOMPARE(record.take(), QString());
            QCOMPARE(bar.currentPage(), 12);
            QCOMPARE(edit(bar)->text(), QLatin1String(wrong));
            QVERIFY(QtMessageTip::current() && QtMessageTip::current()->isVisible());
            QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("当前设置超出范围！"));
            QCOMPARE(QtMessageTip::current()->tipStyle(), QtMessageTip::Bubble);
            QtMessageTip::current()->sltTimeOut();
        }
        edit(bar)->clear();
        bar.SltJumpPage();
        QCOMPARE(record.take(), QString());
        QVERIFY(QtMessageTip::current()->isVisible());
    }

    void tipIsReused()
    {
        QtMessageTip::showTip(QStringLiteral("第一个"), 60000);
        QPointer<QtMessageTip> first = QtMessageTip::current();
        QVERIFY(first->isVisible());
        QCOMPARE(first->size(), QSize(first->fontMetrics().horizontalAdvance(QStringLiteral("第一个")) + 20,
                                      first->fontMetrics().height() + 25));
        QCOMPARE(first->font().pixelSize(), 13);
        QtMessageTip::showTipAt(QStringLiteral("较长的第二个提示"), {40, 50}, 90000);
        QCOMPARE(QtMessageTip::current(), first.data());
        QCOMPARE(first->text(), QStringLiteral("较长的第二个提示"));
        QCOMPARE(first->tipStyle(), QtMessageTip::Bubble);
        QCOMPARE(first->pos(), QPoint(40, 50));
        QVERIFY(first->remainingTime() > 60000);
        QCOMPARE(first->width(), first->fontMetrics().horizontalAdvance(first->text()) + 20);
        first->sltTimeOut();
        QVERIFY(!first->isVisible());
        QtMessageTip::showTip(QStringLiteral("再来"), 1);
        QCOMPARE(QtMessageTip::current(), first.data());
        QTRY_VERIFY_WITH_TIMEOUT(!first->isVisible(), 30000); // by its own timer
        QWidget elsewhere;
        for (const auto style : {QtMessageTip::Notice, QtMessageTip::Bubble}) {
            QtMessageTip::showTipAt(QStringLiteral("挡住"), {40, 50}, 60000, style);
            QTest::mousePress(&elsewhere, Qt::LeftButton, {}, {700, 500});
            QCOMPARE(first->isVisible(), style == QtMessageTip::Notice);
        }

        first->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!first);
        QtMessageTip::showTip(QStringLiteral("新的"));
        QVERIFY(QtMessageTip::current()->isVisible());
    }

    void tipLooks()
    {
        const auto picture = [] {
            return QtMessageTip::current()->grab().toImage().convertToFormat(QImage::Format_ARGB32);
        };
        QtMessageTip::showTipAt(QStringLiteral("提示提示提示"), {0, 0});
        QImage image = picture();
        const int middle = image.height() / 2 + 5;
        QCOMPARE(image.pixelColor(4, middle), QColor("#f03e10"));
        QCOMPARE(image.pixelColor(1 + 15, 6), QColor("#f03e10")); // the pointer
        QCOMPARE(image.pixelColor(40, 6).alpha(), 0);
        QCOMPARE(image.pixelColor(40, 11), QColor("#f03e10"));
        QCOMPARE(image.pixelColor(0, 0).alpha(), 0);

        QtMessageTip::showTip(QStringLiteral("提示提示提示"));
        image = picture();
        QCOMPARE(image.pixelColor(6, image.height() / 2), QColor("#252526"));
        QCOMPARE(image.pixelColor(0, image.height() / 2).alpha(), 0);
        const QRegion shape = QtMessageTip::current()->mask();
        QVERIFY(shape.contains(image.rect().center()) && !shape.contains(QPoint(0, 0)));
        const QColor edge = image.pixelColor(image.width() / 2, 2);
        QVERIFY2(edge.red() > 0x30 && edge.red() <= 0x79, qPrintable(edge.name()));
    }

    void spinnerTurns()
    {
        WaitingSpinnerWidget spinner;
        const QImage before = spinner.grab().toImage();
        for (int i = 0; i < 3; ++i)
            spinner.rotate();
        QCOMPARE(spinner.position(), 3);
        QVERIFY(spinner.grab().toImage() != before);
        for (int i = 0; i < 9; ++i)
            spinner.rotate();
        QCOMPARE(spinner.position(), 0);
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
        line.setText(QStringLiteral("短"));
        QVERIFY(!line.isRolling());
        line.setText(QStringLiteral("这是一段比窗口部件宽得多的滚动文字，需要滚动才能看完"));
        QVERIFY(line.isRolling());
        line.sltRoll();
        line.sltRoll();
        QVERIFY(line.offset() >= 2);
        line.resize(2000, 24);
        QTRY_VERIFY_WITH_TIMEOUT(!line.isRolling(), 30000);
        QCOMPARE(line.offset(), 0);
        line.resize(120, 24);
        QTRY_VERIFY_WITH_TIMEOUT(line.isRolling(), 30000);
        line.hide();
        QVERIFY(!line.isRolling());
    }

    void formPanelMakesRoomForItsScrollBar()
    {
        QWidget window;
        auto *outside = new QPushButton(&window);
        FormPanel panel(&window);
        FormGroup *group = panel.addGroup(QStringLiteral("端口"));
        auto *field = new QComboBox;
        QLabel *label = group->addRow(QStringLiteral("波特率"), field);
        QCOMPARE(label->buddy(), field);
        for (int i = 0; i < 12; ++i)
            group->addWide(new QPushButton(QStringLiteral("按钮%1").arg(i)));
        panel.resize(FormPanel::panelWidth, 1000);
        window.resize(400, 1000);
        window.show();
        QTRY_COMPARE_WITH_TIMEOUT(panel.width(), FormPanel::panelWidth, 30000);
        panel.resize(panel.width(), 200);
        QTRY_VERIFY_WITH_TIMEOUT(panel.verticalScrollBar()->isVisible(), 30000);
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
    }

    void wheelScrollsThePanelAndChangesNoFieldBelowThePointer()
    {
        FieldBehavior::install();
        FormPanel panel;
        FormGroup *group = panel.addGroup(QStringLiteral("端口"));
        auto *fixed = new QComboBox;
        auto *editable = new QComboBox;
        auto *spin = new QSpinBox;
        auto *slider = new QSlider(Qt::Horizontal);
        for (QComboBox *box : {fixed, editable})
            box->addItems({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
        for (QWidget *field : std::initializer_list<QWidget *>{fixed, editable, spin, slider})
            group->addRow(QStringLiteral("值"), field);
        editable->setEditable(true);
        spin->setValue(5);
        for (int i = 0; i < 20; ++i)
            group->addWide(new QPushButton(QStringLiteral("按钮")));
        panel.resize(FormPanel::panelWidth, 200);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        const auto values = [&] {
            return QList<int>{fixed->currentIndex(), editable->currentIndex(), spin->value(),
                              slider->value()};
        };
        QScrollBar *bar = panel.verticalScrollBar();
        QVERIFY(bar->isEnabled());
        for (QWidget *field :
             std::initializer_list<QWidget *>{fixed, editable, editable->lineEdit(), spin, slider}) {
            bar->setValue(0);
            turnWheel(field);
            QCOMPARE(values(), QList<int>({0, 0, 5, 0}));
            QVERIFY2(bar->value() > 0, field->metaObject()->className());
            QVERIFY(field->focusPolicy() != Qt::WheelFocus);
        }
        QApplication::setActiveWindow(&panel);
        QVERIFY(QTest::qWaitForWindowActive(&panel));
        fixed->setFocus();
        turnWheel(fixed);
        spin->setFocus();
        turnWheel(spin);
        QCOMPARE(values(), QList<int>({0, 0, 4, 0}));
        // Both lists have rows of one height.
        qApp->setStyleSheet(QStringLiteral("QComboBox { combobox-popup: 0; }"
                                           "QComboBox QAbstractItemView::item { min-height: 31px; }"));
        for (QComboBox *box : {fixed, editable}) {
            box->showPopup();
            QCOMPARE(box->view()->visualRect(box->model()->index(0, 0)).height(), 31);
            box->hidePopup();
        }
        qApp->setStyleSheet({});
        panel.widget()->setMaximumHeight(50);
        QTRY_VERIFY(!bar->isEnabled()); // and so without a handle
    }

    void fieldsOfAPanelHaveSpokenNames_data()
    {
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << QStringLiteral("波特率") << QStringLiteral("波特率");
        QTest::newRow("numbered") << QStringLiteral("1. 协议类型") << QStringLiteral("协议类型");
        QTest::newRow("colon") << QStringLiteral("目的地址:") << QStringLiteral("目的地址");
        QTest::newRow("indented") << QStringLiteral("    周期") << QStringLiteral("周期");
        QTest::newRow("unit") << QStringLiteral("断帧间隔(ms)") << QStringLiteral("断帧间隔(ms)");
    }

    void fieldsOfAPanelHaveSpokenNames()
    {
        QFETCH(QString, label);
        FormGroup group(QStringLiteral("组"));
        auto *field = new QLineEdit;
        group.addRow(label, field);
        QTEST(field->accessibleName(), "name");
    }
};

QTEST_MAIN(BaseTest)
#include "test_base.moc"
