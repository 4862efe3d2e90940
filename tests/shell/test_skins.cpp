// The skins: what Qt makes of the three files. Texts are read on widgets that
// were polished with the sheet, and their contrast is computed.

#include "apppaths.h"
#include "contrast.h"
#include "korvexresources.h"
#include "settings.h"
#include "skin.h"
#include "testfiles.h"

#include <QtTest>
#include <QtWidgets>

// The names that the sheet's rule for the user's colors goes by.
class QtTerminalWidget : public QTextBrowser
{
    Q_OBJECT
};

namespace {

// "selector@property" to the color that the sheet has for it; the last rule counts.
QHash<QString, QColor> colorsOf(QString sheet)
{
    const QRegularExpression comment("/\\*.*?\\*/", QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpression rule("([^{}]+)\\{([^{}]*)\\}");
    const QRegularExpression value("([a-z-]+):\\s*(#[0-9a-f]{6})");
    QHash<QString, QColor> colors;
    for (auto rules = rule.globalMatch(sheet.remove(comment)); rules.hasNext();) {
        const auto match = rules.next();
        for (const QString &selector : match.captured(1).split(','))
            for (auto values = value.globalMatch(match.captured(2)); values.hasNext();) {
                const auto found = values.next();
                colors[selector.simplified() + '@' + found.captured(1)] = QColor(found.captured(2));
            }
    }
    return colors;
}

} // namespace

class SkinsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initKorvexResources();
        AppPaths::setRoot(m_root.path());
        AppPaths::makeFolders();
    }

    void skins_data()
    {
        QTest::addColumn<int>("index");
        QTest::newRow("default") << 0;
        QTest::newRow("white") << 1;
        QTest::newRow("yellow") << 2;
    }

    void skins()
    {
        QFETCH(int, index);
        const QByteArray bytes = contentOf(QString(":/resources/css/%1.css").arg(QTest::currentDataTag()));
        QVERIFY2(!bytes.contains('@'), "a color of the template was not filled in");
        QVERIFY(!bytes.contains("recvBrowser") && !bytes.contains("textEditSend"));
        // Every picture that is named exists.
        const QRegularExpression url("url\\(([^)]+)\\)");
        for (auto urls = url.globalMatch(bytes); urls.hasNext();) {
            const QString path = urls.next().captured(1);
            QVERIFY2(QFile::exists(path), qPrintable(path));
        }
        // Qt parses it: a sheet with an error styles nothing and warns.
        static QString warnings;
        warnings.clear();
        const auto previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &, const QString &message) { warnings += message; });
        Skin::apply(index);
        QPushButton button;
        button.ensurePolished();
        qInstallMessageHandler(previous);
        QCOMPARE(warnings, QString());
        QCOMPARE(button.palette().color(QPalette::ButtonText), QColor(Skin::palette().text));

        const auto colors = colorsOf(Skin::styleSheet());
        // Which text can be read on which grounds.
        const std::pair<const char *, const char *> rows[] = {
            {"QWidget",
             "QDialog|QtTitleBar|QtTitleBar QPushButton:hover|QLineEdit|QMenu|QMenu::item:selected|"
             "QPushButton|QPushButton:hover|QPushButton:pressed|QPushButton:checked|"
             "QAbstractItemView::item:selected:!active|QHeaderView::section|"
             "QAbstractItemView@alternate-|QProgressBar::chunk|"
             "QtTitleBar QToolButton#btnClose:hover"},
            {"QWidget:disabled", "QDialog|QLineEdit:disabled|QLineEdit|QMenu|QPushButton:disabled|"
                                 "QAbstractItemView@alternate-"},
            {"QPushButton[primary=\"true\"]", "QPushButton[primary=\"true\"]|"
                                              "QPushButton[primary=\"true\"]:hover|"
                                              "QPushButton[primary=\"true\"]:pressed"},
            {"QWidget@selection-", "QWidget@selection-"},
            {"QLabel[kind=\"error\"]", "QDialog|QtStatusBar StatusLabel:hover"},
            {"QtStatusBar StatusLabel[kind=\"error\"]", "QtTitleBar"},
            {"QtStatusBar StatusLabel", "QtTitleBar"},
            {"QTabBar::tab", "QtTitleBar"},
            {"QGroupBox::title", "QDialog"},
            {"QLineEdit:read-only", "QDialog"},
            {"QToolTip", "QToolTip"}};
        const auto color = [&colors](const QString &place, const QString &property) {
            return colors.value(place + (place.contains('@') ? "" : "@") + property);
        };
        for (const auto &[text, grounds] : rows)
            for (const QString &ground : QString(grounds).split('|')) {
                const QColor front = color(text, "color"), back = color(ground, "background-color");
                QVERIFY2(front.isValid() && back.isValid() &&
                             Contrast::ratio(front, back) >= Contrast::readable,
                         qPrintable(text + (" on " + ground)));
            }
        // The help button's white glyph, as a picture: 3 to 1.
        QVERIFY(Contrast::ratio(Qt::white, color("QtTitleBar QPushButton#btnHelp", "background-color")) >=
                2.9);
        const QColor ground = color("QDialog", "background-color");
        for (const QColor &asked :
             {QColor(Qt::red), QColor(Qt::darkBlue), QColor(Qt::yellow), QColor(0x777777)}) {
            const QColor shown = Contrast::readableOn(ground, asked);
            QVERIFY(Contrast::ratio(ground, shown) >= Contrast::readable);
            QVERIFY(Contrast::ratio(ground, asked) < Contrast::readable || shown == asked);
            QVERIFY(shown == asked || Contrast::ratio(ground, shown) < Contrast::readable + 1); // the nearest
        }
        QCOMPARE(color("QDialog", "background-color"), QColor(Skin::palette().window));
        QCOMPARE(color("QWidget", "color"), QColor(Skin::palette().text));

        // The user's colors win.
        Settings::instance().recvBackground = QColor("#123456");
        Settings::instance().recvTextColor = QColor("#fedcba");
        Skin::apply(index);
        QtTerminalWidget terminal;
        terminal.setObjectName(QString("recvBrowser"));
        terminal.setPlainText(QString("x"));
        terminal.resize(200, 100);
        for (const bool enabled : {true, false}) {
            terminal.setEnabled(enabled);
            terminal.ensurePolished();
            QCOMPARE(terminal.palette().color(QPalette::Text), QColor("#fedcba"));
            QCOMPARE(terminal.grab().toImage().pixelColor(150, 80), QColor("#123456"));
        }
    }

private:
    QTemporaryDir m_root;
};

QTEST_MAIN(SkinsTest)
#include "test_skins.moc"
