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

// The names that the sheet's rule for the user's colours goes by.
class QtTerminalWidget : public QTextBrowser
{
    Q_OBJECT
};

namespace {

// The value of a property in the rule with exactly this selector; the last one
// counts.
QColor colourOf(const QString &sheet, const QString &selector, const QString &property)
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
        QVERIFY2(!bytes.contains('@'), "a colour of the template was not filled in");
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
        const auto colour = [&sheet](const char *selector, const char *property) {
            const QColor found = colourOf(sheet, QLatin1String(selector), QLatin1String(property));
            if (!found.isValid())
                qWarning("no %s in the rule of %s", property, selector);
            return found;
        };
        const QColor text = colour("QWidget", "color");
        const QColor disabled = colour("QWidget:disabled", "color");
        const QColor error = colour("QLabel[kind=\"error\"]", "color");
        const QColor window = colour("QDialog", "background-color");
        const QColor bar = colour("QtTitleBar", "background-color");
        const QColor field = colour("QLineEdit", "background-color");
        const QColor panel = colour("QMenu", "background-color");
        const QColor secondary = colour("QtStatusBar StatusLabel", "color");
        const QColor onAccent = colour("QPushButton[primary=\"true\"]", "color");
        const struct
        {
            const char *what;
            QColor front;
            QColor back;
        } pairs[] = {
            {"text on the window", text, window},
            {"text on bars", text, bar},
            {"text on a hovered bar", text, colour("QtTitleBar QPushButton:hover", "background-color")},
            {"text in fields", text, field},
            {"text in menus", text, panel},
            {"chosen menu item", text, colour("QMenu::item:selected", "background-color")},
            {"text on a button", text, colour("QPushButton", "background-color")},
            {"text on a hovered button", text, colour("QPushButton:hover", "background-color")},
            {"text on a pressed button", text, colour("QPushButton:pressed", "background-color")},
            {"text on a checked button", text, colour("QPushButton:checked", "background-color")},
            {"primary button", onAccent, colour("QPushButton[primary=\"true\"]", "background-color")},
            {"hovered primary button", onAccent,
             colour("QPushButton[primary=\"true\"]:hover", "background-color")},
            {"pressed primary button", onAccent,
             colour("QPushButton[primary=\"true\"]:pressed", "background-color")},
            {"selection", colour("QWidget", "selection-color"),
             colour("QWidget", "selection-background-color")},
            {"selection without focus", text,
             colour("QAbstractItemView::item:selected:!active", "background-color")},
            {"table header", text, colour("QHeaderView::section", "background-color")},
            {"second row", text, colour("QAbstractItemView", "alternate-background-color")},
            {"disabled text on the window", disabled, window},
            {"disabled text in fields", disabled, colour("QLineEdit:disabled", "background-color")},
            {"disabled text in tables", disabled, field},
            {"disabled text in every second row", disabled,
             colour("QAbstractItemView", "alternate-background-color")},
            {"disabled menu item", disabled, panel},
            {"disabled button", disabled, colour("QPushButton:disabled", "background-color")},
            {"error on the window", error, window},
            {"error in the status bar", colour("QtStatusBar StatusLabel[kind=\"error\"]", "color"), bar},
            {"error in a hovered status bar", error,
             colour("QtStatusBar StatusLabel:hover", "background-color")},
            {"notice", secondary, bar},
            {"group title", colour("QGroupBox::title", "color"), window},
            {"tab", colour("QTabBar::tab", "color"), bar},
            {"read-only field", colour("QLineEdit:read-only", "color"), window},
            {"progress", text, colour("QProgressBar::chunk", "background-color")},
            {"tool tip", colour("QToolTip", "color"), colour("QToolTip", "background-color")},
            {"window icons on a hovered close button", QColor(Skin::palette().text),
             colour("QtTitleBar QToolButton#btnClose:hover", "background-color")},
        };
        for (const auto &pair : pairs) {
            const double ratio = Contrast::ratio(pair.front, pair.back);
            QVERIFY2(pair.front.isValid() && pair.back.isValid() && ratio >= Contrast::readable,
                     qPrintable(QStringLiteral("%1: %2").arg(QLatin1String(pair.what)).arg(ratio)));
        }
        // The help button's white glyph, as a picture: 3 to 1.
        QVERIFY(Contrast::ratio(Qt::white, colour("QtTitleBar QPushButton#btnHelp", "background-color")) >=
                2.9);
        QCOMPARE(window, QColor(Skin::palette().window));
        QCOMPARE(text, QColor(Skin::palette().text));
    }

    void userColoursWin_data() { files_data(); }
    void userColoursWin()
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
