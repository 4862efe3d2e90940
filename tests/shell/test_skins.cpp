// The skins: what Qt makes of the three files. Texts are read on widgets that
// were polished with the sheet, and their contrast is computed.

#include "apppaths.h"
#include "contrast.h"
#include "korvexresources.h"
#include "settings.h"
#include "skin.h"

#include <QApplication>
#include <QFile>
#include <QPushButton>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>

// The names that the sheet's rule for the user's colors goes by.
class QtTerminalWidget : public QTextBrowser
{
    Q_OBJECT
};

namespace {

// The value of a property in the rule with exactly this selector; the last one
// counts.
QColor colorOf(const QString &sheet, const QString &selector, const QString &property)
{
    static const QRegularExpression comment(QStringLiteral("/\\*.*?\\*/"),
                                            QRegularExpression::DotMatchesEverythingOption);
    QString plain = sheet;
    plain.remove(comment);
    static const QRegularExpression rule(QStringLiteral("([^{}]+)\\{([^{}]*)\\}"));
    QColor found;
    auto rules = rule.globalMatch(plain);
    while (rules.hasNext()) {
        const auto match = rules.next();
        QStringList selectors = match.captured(1).split(QLatin1Char(','));
        for (QString &one : selectors)
            one = one.simplified();
        if (!selectors.contains(selector))
            continue;
        const QRegularExpression value(QStringLiteral("(?:^|[;\\s])%1:\\s*(#[0-9a-f]{6})").arg(property));
        if (const auto hit = value.match(match.captured(2)); hit.hasMatch())
            found = QColor(hit.captured(1));
    }
    return found;
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

    void files_data()
    {
        QTest::addColumn<int>("index");
        QTest::newRow("default") << 0;
        QTest::newRow("white") << 1;
        QTest::newRow("yellow") << 2;
    }

    void files()
    {
        QFETCH(int, index);
        QFile file(QStringLiteral(":/resources/css/%1.css").arg(QLatin1String(QTest::currentDataTag())));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QVERIFY(bytes.size() > 5000);
        for (const char byte : bytes)
            QVERIFY(byte >= 0);
        QVERIFY2(!bytes.contains('@'), "a color of the template was not filled in");
        QVERIFY(!bytes.contains("recvBrowser") && !bytes.contains("textEditSend"));
        // Every picture that is named exists.
        static const QRegularExpression url(QStringLiteral("url\\(([^)]+)\\)"));
        auto urls = url.globalMatch(QString::fromLatin1(bytes));
        QVERIFY(urls.hasNext());
        while (urls.hasNext()) {
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
    }

    void contrast_data() { files_data(); }
    void contrast()
    {
        QFETCH(int, index);
        Skin::apply(index);
        const QString sheet = Skin::styleSheet();
        const auto color = [&sheet](const char *selector, const char *property) {
            return colorOf(sheet, QLatin1String(selector), QLatin1String(property));
        };
        const QColor text = color("QWidget", "color");
        const QColor disabled = color("QWidget:disabled", "color");
        const QColor error = color("QLabel[kind=\"error\"]", "color");
        const QColor window = color("QDialog", "background-color");
        const QColor onAccent = color("QPushButton[primary=\"true\"]", "color");
        const auto readable = [&color](const QColor &front, const char *selector,
                                       const char *property = "background-color") {
            const QColor back = color(selector, property);
            if (front.isValid() && back.isValid() && Contrast::ratio(front, back) >= Contrast::readable)
                return true;
            qWarning("%s: %s on %s", selector, qPrintable(front.name()), qPrintable(back.name()));
            return false;
        };
        for (const char *ground :
             {"QDialog", "QtTitleBar", "QtTitleBar QPushButton:hover", "QLineEdit", "QMenu",
              "QMenu::item:selected", "QPushButton", "QPushButton:hover", "QPushButton:pressed",
              "QPushButton:checked", "QAbstractItemView::item:selected:!active", "QHeaderView::section",
              "QProgressBar::chunk", "QtTitleBar QToolButton#btnClose:hover"})
            QVERIFY(readable(text, ground));
        for (const char *ground :
             {"QDialog", "QLineEdit:disabled", "QLineEdit", "QMenu", "QPushButton:disabled"})
            QVERIFY(readable(disabled, ground));
        for (const QColor &front : {text, disabled})
            QVERIFY(readable(front, "QAbstractItemView", "alternate-background-color"));
        for (const char *state : {"", ":hover", ":pressed"})
            QVERIFY(readable(onAccent, qPrintable(QString("QPushButton[primary=\"true\"]") + state)));
        QVERIFY(readable(color("QWidget", "selection-color"), "QWidget", "selection-background-color"));
        for (const char *ground : {"QDialog", "QtStatusBar StatusLabel:hover"})
            QVERIFY(readable(error, ground));
        for (const char *front :
             {"QtStatusBar StatusLabel[kind=\"error\"]", "QtStatusBar StatusLabel", "QTabBar::tab"})
            QVERIFY(readable(color(front, "color"), "QtTitleBar"));
        for (const char *front : {"QGroupBox::title", "QLineEdit:read-only"})
            QVERIFY(readable(color(front, "color"), "QDialog"));
        QVERIFY(readable(color("QToolTip", "color"), "QToolTip"));
        // The help button's white glyph, as a picture: 3 to 1.
        QVERIFY(Contrast::ratio(Qt::white, color("QtTitleBar QPushButton#btnHelp", "background-color")) >=
                2.9);
        QCOMPARE(window, QColor(Skin::palette().window));
        QCOMPARE(text, QColor(Skin::palette().text));
    }

    void userColorsWin_data() { files_data(); }
    void userColorsWin()
    {
        QFETCH(int, index);
        Settings::instance().recvBackground = QColor("#123456");
        Settings::instance().recvTextColor = QColor("#fedcba");
        Skin::apply(index);
        QtTerminalWidget terminal;
        terminal.setObjectName(QStringLiteral("recvBrowser"));
        terminal.setPlainText(QStringLiteral("x"));
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
