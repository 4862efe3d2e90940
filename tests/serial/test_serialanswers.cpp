// Automatic answers of the serial page to a board, and the editor of the rules.

#include "answerdialog.h"
#include "answerpanel.h"
#include "serialpagetest.h"
#include "settings.h"
#include "waitfor.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QTableView>

class TestSerialAnswers : public SerialPageTest
{
    Q_OBJECT

private:
    // In the dialog of the rules, which is then accepted.
    void editRules(const std::function<void(AnswerDialog *)> &edit)
    {
        bool wasOpen = false;
        QTimer::singleShot(0, m_page.get(), [&] {
            auto *dialog = qobject_cast<AnswerDialog *>(QApplication::activeModalWidget());
            wasOpen = dialog;
            edit(dialog);
            dialog->accept();
        });
        click("btnAnswerRules");
        QVERIFY(wasOpen);
    }
    static void addRule(AnswerDialog *dialog, int kind, const QString &pattern, const QString &answer)
    {
        dialog->findChild<QAbstractButton *>("btnAddAnswer")->click();
        auto *kinds = dialog->findChild<QComboBox *>("comboAnswerKind");
        kinds->setCurrentIndex(kind);
        emit kinds->activated(kind);
        for (const auto &[name, text] : {std::pair{"editAnswerPattern", pattern}, {"editAnswer", answer}}) {
            auto *edit = dialog->findChild<QLineEdit *>(name);
            edit->setText(text);
            emit edit->textEdited(text);
        }
    }
    LinkAnswers *answers() const { return m_page->findChild<AnswerPanel *>()->answers(); }

private slots:
    void answersABoard()
    {
        editRules([](AnswerDialog *dialog) {
            addRule(dialog, AnswerRule::Text, QStringLiteral("温度?\\r"), QStringLiteral("温度\\x01"));
            addRule(dialog, AnswerRule::Hex, QStringLiteral("AA (?? ) 55"), QStringLiteral("$1"));
            addRule(dialog, AnswerRule::Expression, QStringLiteral("name: $"), QStringLiteral("root"));
            auto *lineEnd = dialog->findChild<QComboBox *>("comboAnswerLineEnd");
            lineEnd->setCurrentIndex(AnswerRule::CrLf);
            emit lineEnd->activated(AnswerRule::CrLf);
        });
        openPort();
        click("checkAutoAnswer");
        QVERIFY(m_board->write("\xCE\xC2\xB6\xC8?")); // GB18030
        QVERIFY(m_board->write("\r"));
        QCOMPARE(m_board->read(5), QByteArray("\xCE\xC2\xB6\xC8\x01"));
        QVERIFY(m_board->write("\xAA\x31\x55"));
        QCOMPARE(m_board->read(1), QByteArray("1"));
        QVERIFY(m_board->write("name: ")); // and nothing follows
        QCOMPARE(m_board->read(6), QByteArray("root\r\n"));
        WAIT_EQUAL(m_page->counts().at(0), QStringLiteral("12"));
        Settings::instance().textCodec = 0;
        QVERIFY(m_board->write("\xE6\xB8\xA9\xE5\xBA\xA6?\r"));
        QCOMPARE(m_board->read(7), QByteArray("\xE6\xB8\xA9\xE5\xBA\xA6\x01"));
        editRules([](AnswerDialog *dialog) {
            const auto *model = dialog->findChild<QTableView *>()->model();
            QCOMPARE(model->index(0, 4).data().toString(), QStringLiteral("2"));
            dialog->findChild<QAbstractButton *>("btnRemoveAnswer")->click();
        });
        QCOMPARE(answers()->ruleCount(), 2);
        click("checkAutoAnswer");
        receive("\xAA\x32\x55");
        QCOMPARE(answers()->counts().hits, qint64(4));
    }

    // The line is the transfer's, whose bytes must not be answered.
    void pausesForATransfer()
    {
        editRules([](AnswerDialog *dialog) {
            addRule(dialog, AnswerRule::Text, QStringLiteral("ask"), QStringLiteral("answer"));
            dialog->findChild<QSpinBox *>("spinAnswerDelay")->setValue(60000);
            addRule(dialog, AnswerRule::Text, QStringLiteral("now"), QStringLiteral("at once"));
        });
        openPort();
        click("checkAutoAnswer");
        receive("ask");
        WAIT_EQUAL(answers()->counts().hits, qint64(1));
        const QString file = m_root->filePath("file.bin");
        QVERIFY(writeFile(file, "content"));
        m_page->sltSendXYmodemFile(0, 1024, {file});
        QVERIFY(m_notices->contains(QList<QVariant>{QStringLiteral("自动应答已暂停，1个应答未发送！"), 255}));
        QVERIFY(answers()->isPaused());
        QVERIFY(m_board->write("nowC"));
        QCOMPARE(m_board->read(133).size(), 133); // the first block, for the "C"
        m_page->sltSendXYmodemFile(0, 1024, {});
        WAIT_FOR(!answers()->isPaused());
        QCOMPARE(answers()->counts().hits, qint64(1));
        QVERIFY(m_board->write("now"));
        WAIT_EQUAL(answers()->counts().sent, qint64(1));
    }
};

QTEST_MAIN(TestSerialAnswers)
#include "test_serialanswers.moc"
