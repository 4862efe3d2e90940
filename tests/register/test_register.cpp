// The dialog of a register table.

#include "datamanagerwidget.h"
#include "dialoganswers.h"
#include "korvexresources.h"
#include "qtmessagetip.h"
#include "registertablemodel.h"
#include "testfiles.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

class TestRegister : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initKorvexResources(); }
    void init()
    {
        m_table = std::make_unique<RegisterTableModel>();
        new QAbstractItemModelTester(m_table.get(), m_table.get());
        m_dialog = std::make_unique<DataManagerWidget>(DataManagerWidget::Read, m_table.get());
        m_dialog->show();
        m_view = m_dialog->findChild<QTableView *>();
        m_questions.clear();
        m_answer = 1;
        m_fileName.clear();
        DialogAnswers::instance().message = [this](const QString &, const QString &text, int) {
            m_questions.append(text);
            return m_answer;
        };
        DialogAnswers::instance().fileNames = [this](auto...) { return QStringList(m_fileName); };
    }

    void cleanup()
    {
        DialogAnswers::instance() = DialogAnswers();
        if (QtMessageTip::current())
            QtMessageTip::current()->close();
        m_dialog.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void exportsAndImports()
    {
        const QTemporaryDir folder;
        m_fileName = folder.filePath(QStringLiteral("table.csv"));
        for (const int row : {0, 98})
            type(row, RegisterTableModel::Address, QStringLiteral("3008"));
        const auto isBold = [this](int row) {
            return shown(row, 3).data(Qt::FontRole).value<QFont>().bold();
        };
        QVERIFY(isBold(98) && !isBold(97));
        click("btnExport");
        QVERIFY(!isBold(98));
        QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("文件导出成功！"));
        click("btnImport");
        QTRY_COMPARE_WITH_TIMEOUT(progress(), QStringLiteral("读取 100 行，跳过 0 行"), 20000);
        QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("数据导入完成！！"));
        QVERIFY(m_dialog->findChild<QPushButton *>("btnConfirm")->isEnabled());
        QCOMPARE(shown(99, RegisterTableModel::Address).data().toString(), QStringLiteral("寄存器地址"));

        QVERIFY(writeFile(m_fileName, QByteArray("1,30,5A,x\n").repeated(10005)));
        click("btnImport");
        QVERIFY(!m_dialog->findChild<QPushButton *>("btnConfirm")->isEnabled());
        QVERIFY(m_dialog->findChild<QPushButton *>("btnStopRegisters")->isHidden()); // it stops requests
        QTRY_COMPARE_WITH_TIMEOUT(progress(), QStringLiteral("读取 9801 行，跳过 0 行，超出 204 行"), 20000);
        QCOMPARE(m_questions, QStringList{QStringLiteral("寄存器表最多10000行，文件中有204行没有导入！")});
        QCOMPARE(shown(99, RegisterTableModel::Address).data().toString(), QStringLiteral("30")); // on page 2

        click("btnAddPage");
        QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("寄存器表最多100页！"));
        m_fileName += "/x.csv";
        m_questions.clear();
        click("btnImport");
        click("btnExport");
        QCOMPARE(m_questions.size(), 2);
        QCOMPARE(m_questions.last(), QStringLiteral("文件打开失败，请重试！"));
        QVERIFY(progress().startsWith(QStringLiteral("导出失败：")));
        const QSignalSpy confirmed(m_dialog.get(), &DataManagerWidget::confirmed);
        click("btnConfirm");
        QVERIFY(confirmed.size() == 1 &&
                m_view->columnViewportPosition(3) + m_view->columnWidth(3) == m_view->viewport()->width());
    }

    void asksBeforeRowsAreLost()
    {
        click("btnClear");
        QVERIFY(m_dialog->mayClose() && m_questions.isEmpty());
        type(0, RegisterTableModel::Address, QStringLiteral("3008"));
        for (m_answer = 0; m_answer < 3; ++m_answer) // cancel, save without a file name, discard
            QCOMPARE(m_dialog->mayClose(), m_answer == 2);
        m_answer = 0;
        click("btnClear");
        QCOMPARE(m_table->usedRows(), 1);
        m_answer = 1;
        const QTemporaryDir folder;
        m_fileName = folder.filePath(QStringLiteral("table.csv"));
        QVERIFY(m_dialog->mayClose() && QFileInfo(m_fileName).size() > 0);
        click("btnAddPage");
        click("btnLastPage");
        click("btnClear");
        QCOMPARE(m_view->model()->rowCount(), 100);
        QCOMPARE(m_table->usedRows(), 0);
        QCOMPARE(m_dialog->findChild<QLabel *>("pageCount")->text(), "/ 1");
    }

    void turnsPages()
    {
        const QSignalSpy refreshes(m_dialog.get(), &DataManagerWidget::signalRefreshData);
        const auto address = [this] { return shown(0, RegisterTableModel::Address).data().toString(); };
        for (const char *text : {"02", "03", ""}) {
            click("btnAddPage");
            click("btnLastPage");
            type(0, RegisterTableModel::Address, QLatin1String(text));
        }
        QCOMPARE(refreshes.last().at(0).toInt(), 4);
        QCOMPARE(m_view->model()->rowCount(), 100);
        m_dialog->SltChangePage(5);
        QCOMPARE(address(), QString());
        click("btnDeletePage"); // an empty one goes without a question
        QVERIFY(m_questions.isEmpty());
        QCOMPARE(address(), QStringLiteral("03"));
        m_dialog->SltChangePage(2);
        m_answer = 0;
        click("btnDeletePage");
        QCOMPARE(m_questions, QStringList{QStringLiteral("当前页有1行已填写，是否确认删除当前页？")});
        QCOMPARE(address(), QStringLiteral("02"));
        m_answer = 1;
        click("btnDeletePage");
        QCOMPARE(address(), QStringLiteral("03"));
        QCOMPARE(m_table->row(100).address, QStringLiteral("03"));

        const auto mark = [this](int row) {
            const QVariant icon = shown(row, RegisterTableModel::Value).data(Qt::DecorationRole);
            return icon.value<QIcon>().pixmap(16).toImage();
        };
        m_table->setOutcome(100, RegisterTableModel::Answered);
        m_table->setOutcome(101, RegisterTableModel::Refused);
        QVERIFY(!mark(0).isNull() && !mark(1).isNull() && mark(0) != mark(1) && mark(2).isNull());
        m_view->scrollToBottom();
        click("btnFirstPage");
        QVERIFY(mark(0).isNull() && m_view->rowAt(0) == 0);

        // The only page is emptied; a number that was only typed names no page.
        type(0, RegisterTableModel::Address, QStringLiteral("01"));
        auto *number = m_dialog->findChild<QLineEdit *>("pageEdit");
        number->setText(QStringLiteral("2"));
        click("btnDeletePage");
        QCOMPARE(number->text(), QStringLiteral("1"));
        QCOMPARE(address(), QStringLiteral("03"));
        m_questions.clear();
        for (m_answer = 0; m_answer < 2; ++m_answer) {
            click("btnDeletePage");
            QCOMPARE(address(), m_answer == 0 ? QStringLiteral("03") : QString());
        }
        click("btnDeletePage"); // nothing is left to lose
        QCOMPARE(m_questions.size(), 2);
        QCOMPARE(m_view->model()->rowCount(), 100);
    }

    void limitsCells()
    {
        const auto typed = [this](int column, const QString &text) {
            m_view->setCurrentIndex(shown(0, column));
            QTest::keyClick(m_view, text.at(0).toLatin1()); // opens the editor
            QTest::keyClicks(m_view->findChild<QLineEdit *>(), text.mid(1));
            if (m_view->findChild<QLineEdit *>()->hasFrame())
                return QStringLiteral("a frame within the cell's");
            const QString kept = m_view->findChild<QLineEdit *>()->text();
            QTest::keyClick(m_view->findChild<QLineEdit *>(), Qt::Key_Escape);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            return kept;
        };
        QCOMPARE(typed(1, QStringLiteral("0x3g008,123456")), QStringLiteral("03008123"));
        QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("请输入2到8位十六进制数！"));
        QCOMPARE(typed(3, QStringLiteral("a,b")), QStringLiteral("ab"));
        QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("不能含有逗号和换行！"));
        const QPoint place = m_view->visualRect(shown(0, 3)).center();
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(m_view->viewport(), Qt::LeftButton, {}, place);
        QApplication::clipboard()->setText(QStringLiteral("two\nlines")); // refused as a whole
        QTest::keyClick(m_view->findChild<QLineEdit *>(), Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(m_view->findChild<QLineEdit *>()->text(), QString());
        QTest::keyClick(m_view->findChild<QLineEdit *>(), Qt::Key_Escape);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        // A pasted megabyte is kept, and does not stop the window at each repaint.
        fill({{"", "", "", QString(100000, 'x')}});
        QVERIFY(shown(0, 3).data().toString().size() < 1000);
        m_view->edit(shown(0, 3));
        QCOMPARE(m_view->findChild<QLineEdit *>()->text().size(), 100000);
    }

    // Rows of all pages, edited where they are; the table keeps its order.
    void findsAndSortsRows()
    {
        fill({{"10", "3009", "0A", "gain"}, {"9", "300A", "2", "曝光"}, {"x", "", "", "GAIN"}});
        m_table->setCells({{150, 1, "13008"}, {150, 2, "100"}});
        const QAbstractItemModelTester tester(m_view->model());
        const auto places = [this] {
            QStringList rows;
            for (int row = 0; row < m_view->model()->rowCount(); ++row)
                rows += m_view->model()->headerData(row, Qt::Vertical).toString();
            return rows.join(' ');
        };
        action("actionFindRegister")->trigger();
        auto *search = m_dialog->findChild<QLineEdit *>("editFindRegister");
        for (const auto &[text, found] : {std::pair{"gain", "1 3"},
                                          {"0x3008", "151"},
                                          {"300", "1 2 151"},
                                          {"曝", "2"},
                                          {"9", "1 2"},
                                          {"none", ""}}) {
            search->setText(text);
            QCOMPARE(places(), QString(found));
        }
        QVERIFY(!m_dialog->findChild<QWidget *>("btnAddPage")->isEnabled());
        search->setText("13008");
        type(0, RegisterTableModel::Value, "5B");
        QCOMPARE(m_table->row(150).value, QStringLiteral("5B"));
        search->setFocus();
        QTest::keyClick(search, Qt::Key_Escape);
        QVERIFY(m_dialog->isVisible() && m_view->model()->rowCount() == 100);
        const auto sortBy = [this](int column) {
            QHeaderView *const header = m_view->horizontalHeader();
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                              {header->sectionViewportPosition(column) + 20, header->height() / 2});
        };
        for (const auto &[column, rows] :
             {std::pair{0, "2 1 3 151"}, {1, "1 2 151 3"}, {1, "3 151 2 1"}, {2, "2 1 151 3"}}) {
            sortBy(column);
            QCOMPARE(places(), QString(rows));
        }
        type(0, RegisterTableModel::Value, "FF"); // stays where it is
        QCOMPARE(m_table->row(1).value, QStringLiteral("FF"));
        QApplication::setActiveWindow(m_dialog.get());
        m_view->setFocus();
        m_view->setCurrentIndex(shown(0, RegisterTableModel::Value));
        QTest::keyClick(m_view, '8');
        sortBy(2);
        QCOMPARE(m_table->row(1).value, QStringLiteral("08")); // what was typed is not lost
        sortBy(1);
        sortBy(2);
        const QSignalSpy confirmed(m_dialog.get(), &DataManagerWidget::rowsConfirmed);
        m_view->setSelectionMode(QAbstractItemView::MultiSelection);
        for (const int row : {2, 0})
            m_view->selectRow(row);
        action("actionSelectedRegisters")->trigger();
        QCOMPARE(confirmed.value(0).value(0).value<QVector<int>>(), (QVector<int>{1, 150}));
        sortBy(2);
        sortBy(2);
        QCOMPARE(m_view->model()->rowCount(), 100);
        m_table->setOutcome(150, RegisterTableModel::Unequal, {}, "7F");
        action("actionDifferencesOnly")->trigger();
        QCOMPARE(shown(0, 2).data().toString(), QStringLiteral("5B ≠ 板上 7F"));
        m_dialog->SltButtonClicked(2); // what is cleared is not searched any more
        QVERIFY(m_view->model()->rowCount() == 100 && !action("actionDifferencesOnly")->isChecked());
    }

    // Shown and edited in a base, stored in hexadecimal.
    void showsValuesInBases()
    {
        fill({{"", "10", "0x5a", ""}, {"", "", "寄存器值", ""}});
        const std::tuple<int, const char *, const char *, const char *> rows[] = {
            {1, "90", "4294967295", "FFFFFFFF"},
            {1, "90", "4294967296", nullptr},
            {1, "90", "-1", nullptr},
            {2, "0101 1010", "1 0000 0001", "0101"},
            {2, "0101 1010", "2", nullptr},
            {0, "0x5a", "7", "07"},
            {0, "0x5a", "5g", nullptr},
            {1, "90", "", ""}};
        for (const auto &[base, text, typed, stored] : rows) {
            m_table->setValue(0, "0x5a");
            action(QStringLiteral("actionBase%1").arg(base))->trigger();
            QCOMPARE(shown(0, 2).data().toString(), QString(text));
            QCOMPARE(shown(1, 2).data().toString(), QStringLiteral("寄存器值"));
            QVERIFY(m_view->model()->setData(shown(0, 2), text) && m_table->row(0).value == "0x5a");
            QCOMPARE(m_view->model()->setData(shown(0, 2), QString(typed)), stored != nullptr);
            QCOMPARE(m_table->row(0).value, QString(stored ? stored : "0x5a"));
        }
        action("actionBase0")->trigger();
    }

    // As from a spreadsheet; refused as a whole, or what has no place.
    void copiesAndPastes()
    {
        fill({{"1", "3008", "5A", "a\tb"}, {"2", "3009", "5B", ""}});
        m_view->selectAll();
        m_view->selectionModel()->select(shown(99, 3), QItemSelectionModel::Deselect);
        action("actionCopyRegisters")->trigger();
        QVERIFY(
            QApplication::clipboard()->text().startsWith("1\t3008\t5A\t\"a\tb\"\n2\t3009\t5B\t\n\t\t\t\n"));
        const auto paste = [this](int row, int column, const QString &text) {
            m_questions.clear();
            QApplication::clipboard()->setText(text);
            m_view->selectionModel()->setCurrentIndex(shown(row, column),
                                                      QItemSelectionModel::ClearAndSelect);
            QApplication::setActiveWindow(m_dialog.get());
            m_view->setFocus();
            QTest::keyClick(m_view, Qt::Key_V, Qt::ControlModifier);
            return progress();
        };
        QCOMPARE(paste(5, 1, "0x3010\t5\r\n3011\t\r\n"), QStringLiteral("粘贴 2 行"));
        QVERIFY(m_table->row(5).address == "3010" && m_table->row(5).value == "05" && m_questions.isEmpty());
        for (const char *refused : {"30\n3g", "30\t5\ta,b", "30\t5\tx\ty"}) {
            QVERIFY(paste(7, 1, refused).startsWith(QStringLiteral("没有粘贴：第")));
            QVERIFY(m_table->row(7).isEmpty());
        }
        m_answer = 0;
        paste(0, 1, "3008\n40");
        QCOMPARE(m_questions, QStringList(QStringLiteral("粘贴会覆盖1个已填写的单元格，是否继续？")));
        QCOMPARE(m_table->row(1).address, QStringLiteral("3009"));
        m_answer = 1;
        paste(99, 1, QString("01\n").repeated(202)); // pages are added
        QVERIFY(m_table->pageCount() == 4 && m_table->row(300).address == "01");
        QCOMPARE(m_dialog->findChild<QLabel *>("pageCount")->text(), "/ 4");
        QCOMPARE(paste(98, 3, QString("x\n").repeated(9905)),
                 QStringLiteral("粘贴 9902 行，超出表格 3 行未粘贴"));
        action("actionFindRegister")->trigger();
        m_dialog->findChild<QLineEdit *>("editFindRegister")->setText("300");
        QCOMPARE(paste(0, 3, "p\nq\nr\n"), QStringLiteral("粘贴 2 行，超出表格 1 行未粘贴"));
        QVERIFY(m_table->row(0).description == "p" && m_table->row(1).description == "q");
        m_dialog->setBusy(true);
        paste(0, 3, "busy");
        QCOMPARE(m_table->row(0).description, QStringLiteral("p"));
    }

    // Rows without a value, and numbers, are not in C source.
    void keepsWhatNoFileHas()
    {
        const QTemporaryDir folder;
        m_fileName = folder.filePath("list.h");
        click("btnExport");
        QVERIFY(progress().startsWith(QStringLiteral("导出失败：")) && !QFile::exists(m_fileName));
        fill({{"1", "3008", "5A", "x"}});
        click("btnExport");
        QVERIFY(contentOf(m_fileName).contains("{0x3008, 0x5A}, // x") && m_table->hasUnsavedRows());
        m_table->setCells({{0, 0, ""}});
        click("btnExport");
        QVERIFY(!m_table->hasUnsavedRows());
        click("btnImport");
        QTRY_COMPARE_WITH_TIMEOUT(progress(), QStringLiteral("读取 1 行，跳过 5 行（首行为第 1 行）"), 20000);
        m_dialog->copyRows({});
        m_answer = 0;
        m_questions.clear();
        m_dialog->copyRows({{{}, "40", {}, {}}});
        QCOMPARE(m_questions, QStringList(QStringLiteral("当前表有2行，复制会替换所有行，是否继续？")));
        m_answer = 1;
        m_dialog->copyRows({{{}, "40", {}, {}}});
        QVERIFY(m_table->usedRows() == 1 && m_table->row(0).address == "40" && m_table->hasUnsavedRows());
    }

    void stopsWhenItIsClosed()
    {
        const QSignalSpy stops(m_dialog.get(), &DataManagerWidget::stopRequested);
        m_dialog->setBusy(true);
        for (const char *name :
             {"btnImport", "btnExport", "btnClear", "btnConfirm", "btnAddPage", "btnDeletePage"})
            QVERIFY(!m_dialog->findChild<QPushButton *>(QLatin1String(name))->isEnabled());
        QCOMPARE(m_view->editTriggers(), QAbstractItemView::NoEditTriggers);
        QHideEvent minimise;
        QSpontaneKeyEvent::setSpontaneous(&minimise);
        qApp->notify(m_dialog.get(), &minimise);
        QCOMPARE(stops.size(), 0);
        click("btnStopRegisters");
        click("btnCancel");
        QVERIFY(!m_dialog->isVisible() && stops.size() == 2);
    }

private:
    void click(const char *name) const
    {
        QTest::mouseClick(m_dialog->findChild<QPushButton *>(QLatin1String(name)), Qt::LeftButton);
    }
    QModelIndex shown(int row, int column) const { return m_view->model()->index(row, column); }
    QAction *action(const QString &name) const { return m_dialog->findChild<QAction *>(name); }
    void fill(const QList<QStringList> &rows)
    {
        for (int row = 0; row < rows.size(); ++row)
            for (int column = 0; column < rows.at(row).size(); ++column)
                m_table->setData(m_table->index(row, column), rows.at(row).at(column));
    }
    void type(int row, int column, const QString &text) const
    {
        m_view->model()->setData(shown(row, column), text);
    }
    QString progress() const { return m_dialog->findChild<QLabel *>("labelRegisterProgress")->text(); }

    std::unique_ptr<RegisterTableModel> m_table;
    std::unique_ptr<DataManagerWidget> m_dialog;
    QTableView *m_view = nullptr;
    QStringList m_questions;
    int m_answer = 1;
    QString m_fileName;
};

QTEST_MAIN(TestRegister)
#include "test_register.moc"
