// The compiled-in font, pictures, style sheets and translation: that they are
// there, and that they do what the program relies on.

#include "iconfont.h"
#include "korvexresources.h"

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QApplication>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFontMetrics>
#include <QImage>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QRawFont>
#include <QRegularExpression>
#include <QScopedPointer>
#include <QTest>
#include <QTextBrowser>
#include <QTranslator>
#include <QTreeView>
#include <QWizard>

namespace {

using Texts = QStringList;

// Latin words in a text for users, without shortcut keys, "&" marks and the
// names of colour models that have no Chinese form.
bool looksUntranslated(QString text)
{
    text = text.section(QLatin1Char('\t'), 0, 0);
    text.remove(QRegularExpression(QStringLiteral("\\(&\\w\\)|<[^>]*>")));
    text.remove(QRegularExpression(QStringLiteral("\\b(HTML|RGB|HSV)\\b")));
    static const QRegularExpression latinWord(QStringLiteral("[A-Za-z]{2,}"));
    static const QRegularExpression chinese(QStringLiteral("[\\x{4e00}-\\x{9fff}]"));
    return text.contains(latinWord) && !text.contains(chinese);
}

Texts menuTexts(const QMenu &menu)
{
    Texts texts;
    for (const QAction *action : menu.actions()) {
        if (!action->isSeparator())
            texts << action->text();
    }
    return texts;
}

// Everything that a window says: labels, buttons, tool tips, column headers.
Texts windowTexts(const QWidget &window)
{
    Texts texts{window.windowTitle()};
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        if (const auto *label = qobject_cast<const QLabel *>(widget))
            texts << label->text();
        else if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
            texts << button->text();
        else if (const auto *tree = qobject_cast<const QTreeView *>(widget)) {
            const QAbstractItemModel *model = tree->model();
            for (int column = 0; model && column < model->columnCount(); ++column)
                texts << model->headerData(column, Qt::Horizontal).toString();
        }
        texts << widget->toolTip();
    }
    texts.removeAll(QString());
    return texts;
}

// The box around what is painted, in pixels.
QRect inkBox(const QImage &image)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 96)
                box |= QRect(x, y, 1, 1);
        }
    }
    return box;
}

// The enumerators of IconFont::Glyph, read from the header, so that one added
// without a drawing is found.
QMap<QString, ushort> enumerators()
{
    QFile header(QStringLiteral(KORVEX_SOURCE_DIR "/shell/base/iconfont.h"));
    QMap<QString, ushort> result;
    if (!header.open(QIODevice::ReadOnly))
        return result;
    const QString source = QString::fromUtf8(header.readAll());
    static const QRegularExpression line(QStringLiteral("(\\w+)\\s*=\\s*0x([0-9A-Fa-f]{4})\\b"));
    auto match = line.globalMatch(source);
    while (match.hasNext()) {
        const auto found = match.next();
        result.insert(found.captured(1), found.captured(2).toUShort(nullptr, 16));
    }
    return result;
}

} // namespace

class TestResources : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initKorvexResources();
        QLocale::setDefault(QLocale(QStringLiteral("zh_CN")));
        // This catalogue and no other.
        QVERIFY(m_translator.load(QStringLiteral(":/resources/qm/qt_zh_CN.qm")));
        QVERIFY(QCoreApplication::installTranslator(&m_translator));
    }

    void glyphs_data()
    {
        QTest::addColumn<ushort>("code");
        const auto all = enumerators();
        QVERIFY(all.size() > 40);
        for (auto it = all.begin(); it != all.end(); ++it)
            QTest::newRow(qPrintable(it.key())) << it.value();
        // The four whose code points are written down elsewhere as numbers.
        QCOMPARE(all.value(QStringLiteral("CheckCircle")), ushort(0xE614));
        QCOMPARE(all.value(QStringLiteral("QuestionCircle")), ushort(0xE622));
        QCOMPARE(all.value(QStringLiteral("AlertCircle")), ushort(0xE609));
        QCOMPARE(all.value(QStringLiteral("Information")), ushort(0xE6AE));
    }

    void glyphs()
    {
        QFETCH(ushort, code);
        const QFont font = IconFont::font(16);
        const QRawFont raw = QRawFont::fromFont(font);
        QVERIFY(raw.supportsCharacter(QChar(code)));
        QCOMPARE(QFontMetrics(font).height(), 16);
        QCOMPARE(QFontMetrics(font).horizontalAdvance(QChar(code)), 16);

        // Painted with room around it: centred, and within its own square.
        for (const int size : {16, 24, 64}) {
            const QImage image = IconFont::pixmap(IconFont::Glyph(code), Qt::black, size, 2 * size).toImage();
            const QRect box = inkBox(image);
            QVERIFY2(!box.isEmpty(), "nothing painted");
            // But for a pixel that smoothing adds, as on Windows.
            QVERIFY(QRect(size / 2, size / 2, size, size).adjusted(-1, -1, 1, 1).contains(box));
            const QPointF offset = QRectF(box).center() - QPointF(size, size);
            QVERIFY2(
                qAbs(offset.x()) <= 1 && qAbs(offset.y()) <= 1,
                qPrintable(
                    QStringLiteral("at %1 px: off by %2, %3").arg(size).arg(offset.x()).arg(offset.y())));
        }
    }

    void glyphsDiffer()
    {
        // A glyph used twice would hide a wrong line in the list. Closing a
        // window and closing anything look alike, and so do the two bars.
        QHash<QByteArray, QStringList> pictures;
        const auto all = enumerators();
        for (auto it = all.begin(); it != all.end(); ++it) {
            const QImage image = IconFont::pixmap(IconFont::Glyph(it.value()), Qt::black, 32, 32).toImage();
            pictures[QByteArray(reinterpret_cast<const char *>(image.constBits()), int(image.sizeInBytes()))]
                << it.key();
        }
        for (const QStringList &names : qAsConst(pictures)) {
            if (names.size() > 1)
                QVERIFY2(names == QStringList({QStringLiteral("Close"), QStringLiteral("WindowClose")}) ||
                             names ==
                                 QStringList({QStringLiteral("Minus"), QStringLiteral("WindowMinimize")}),
                         qPrintable(names.join(QLatin1Char(' '))));
        }
    }

    void logo()
    {
        const QImage image(QStringLiteral(":/resources/images/app_logo.png"));
        QCOMPARE(image.size(), QSize(256, 256));
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
        QCOMPARE(image.pixelColor(128, 30), QColor(0x1e, 0x1e, 0x1e));
    }

    void marks_data()
    {
        QTest::addColumn<QString>("skin");
        QTest::addColumn<QColor>("text");
        QTest::addColumn<QColor>("accent");
        QTest::newRow("dark") << "dark" << QColor(0xf2, 0xf2, 0xf2) << QColor(0x02, 0xa1, 0xdd);
        QTest::newRow("white") << "white" << QColor(0x33, 0x33, 0x33) << QColor(0x02, 0xa1, 0xdd);
        QTest::newRow("yellow") << "yellow" << QColor(0xf2, 0xf2, 0xf2) << QColor(0xfe, 0xba, 0x3b);
    }

    void marks()
    {
        QFETCH(QString, skin);
        QFETCH(QColor, text);
        QFETCH(QColor, accent);
        const QColor disabled(0x80, 0x80, 0x80);
        const struct
        {
            const char *name;
            QColor colour;
        } expected[] = {
            {"arrow-down", text},
            {"arrow-up", text},
            {"arrow-left", text},
            {"arrow-right", text},
            {"arrow-down-accent", accent},
            {"arrow-down-disabled", disabled},
            {"arrow-up-disabled", disabled},
            {"check-disabled", disabled},
            {"radio", accent},
            {"radio-disabled", disabled},
            {"branch-open", text},
            {"branch-closed", text},
            {"check", QColor()},
        };
        for (const auto &mark : expected) {
            const QString stem =
                QStringLiteral(":/resources/images/%1/%2").arg(skin, QLatin1String(mark.name));
            const QImage once(stem + QStringLiteral(".png"));
            const QImage twice(stem + QStringLiteral("@2x.png"));
            QVERIFY2(!inkBox(once).isEmpty(), qPrintable(stem));
            QCOMPARE(twice.size(), once.size() * 2);
            if (!mark.colour.isValid())
                continue;
            bool solid = false;
            for (int y = 0; y < twice.height(); ++y) {
                for (int x = 0; x < twice.width(); ++x)
                    solid |= twice.pixelColor(x, y) == mark.colour;
            }
            QVERIFY2(solid, qPrintable(stem));
        }
    }

    void styleSheets()
    {
        for (const char *name : {"default", "white", "yellow"}) {
            QFile file(QStringLiteral(":/resources/css/%1.css").arg(QLatin1String(name)));
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString sheet = QString::fromUtf8(file.readAll());
            // Qt says nothing about a missing picture; the mark is just absent.
            static const QRegularExpression url(QStringLiteral("url\\(\\s*[\"']?([^)\"']+)"));
            auto match = url.globalMatch(sheet);
            while (match.hasNext()) {
                const QString path = match.next().captured(1).trimmed();
                QVERIFY2(QFile::exists(path), qPrintable(path));
            }
        }
    }

    void contextMenus()
    {
        QLineEdit line;
        const QScopedPointer<QMenu> lineMenu(line.createStandardContextMenu());
        QTextEdit rich;
        const QScopedPointer<QMenu> richMenu(rich.createStandardContextMenu());
        QPlainTextEdit plain;
        const QScopedPointer<QMenu> plainMenu(plain.createStandardContextMenu());
        QTextBrowser browser;
        const QScopedPointer<QMenu> browserMenu(browser.createStandardContextMenu());

        for (const QMenu *menu : {lineMenu.data(), richMenu.data(), plainMenu.data()}) {
            const Texts texts = menuTexts(*menu);
            QVERIFY(texts.size() >= 7);
            checkChinese(texts);
        }
        checkChinese(menuTexts(*browserMenu));
    }

    void buttons()
    {
        QDialogButtonBox box;
        const int last = QDialogButtonBox::RestoreDefaults;
        for (int button = QDialogButtonBox::FirstButton; button <= last; button <<= 1)
            box.addButton(QDialogButtonBox::StandardButton(button));
        QCOMPARE(box.buttons().size(), 18);
        checkChinese(windowTexts(box));

        QMessageBox message(QMessageBox::Question, QStringLiteral("题"), QStringLiteral("文"),
                            QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        message.setDetailedText(QStringLiteral("详"));
        checkChinese(windowTexts(message));
        QCOMPARE(message.button(QMessageBox::Cancel)->text(), QStringLiteral("取消"));
    }

    void dialogs()
    {
        QFileDialog files;
        files.setOption(QFileDialog::DontUseNativeDialog);
        const Texts fileTexts = windowTexts(files);
        QVERIFY(fileTexts.size() > 12);
        // The side bar and the drop-down list show real paths and are no texts of Qt.
        checkChinese(fileTexts);
        files.setAcceptMode(QFileDialog::AcceptSave);
        files.setFileMode(QFileDialog::AnyFile);
        checkChinese(windowTexts(files));

        QColorDialog colours;
        colours.setOptions(QColorDialog::DontUseNativeDialog | QColorDialog::ShowAlphaChannel);
        const Texts colourTexts = windowTexts(colours);
        QVERIFY(colourTexts.size() > 12);
        checkChinese(colourTexts);

        QInputDialog input;
        input.setInputMode(QInputDialog::IntInput);
        input.sizeHint(); // its widgets come into being on demand
        checkChinese(windowTexts(input));

        QWizard wizard;
        wizard.setOption(QWizard::HaveHelpButton);
        wizard.addPage(new QWizardPage);
        wizard.addPage(new QWizardPage);
        wizard.restart();
        checkChinese(windowTexts(wizard));
    }

    void errorTexts()
    {
        // Of the classes whose errorString() the program shows.
        const struct
        {
            const char *context;
            const char *text;
        } texts[] = {
            {"QSerialPort", "Device is already open"},
            {"QSerialPort", "Error writing to device"},
            {"QSerialPort", "Custom baud rate is not supported"},
            {"QAbstractSocket", "Connection refused"},
            {"QAbstractSocket", "Host not found"},
            {"QNativeSocketEngine", "The bound address is already in use"},
            {"QNativeSocketEngine", "The remote host closed the connection"},
            {"QNetworkReply", "Error transferring %1 - server replied: %2"},
            {"QHttp", "Connection closed"},
            {"QIODevice", "No space left on device"},
            {"QIODevice", "Permission denied"},
            {"QFile", "Cannot open for output: %1"},
            {"QAbstractSpinBox", "&Step up"},
        };
        for (const auto &text : texts) {
            const QString translated = QCoreApplication::translate(text.context, text.text);
            QVERIFY2(!looksUntranslated(translated), text.text);
        }
        // Words that Qt's catalogue has others for.
        QCOMPARE(QCoreApplication::translate("QFileSystemModel", "Size"), QStringLiteral("大小"));
        QCOMPARE(QCoreApplication::translate("QLineEdit", "&Undo"), QStringLiteral("撤销(&U)"));
    }

private:
    static void checkChinese(const Texts &texts)
    {
        QVERIFY(!texts.isEmpty());
        for (const QString &text : texts)
            QVERIFY2(!looksUntranslated(text), qPrintable(text));
    }

    QTranslator m_translator;
};

QTEST_MAIN(TestResources)
#include "test_resources.moc"
