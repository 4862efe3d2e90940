// The compiled-in font, pictures and translation: that they are there, and that
// they do what the program relies on.

#include "iconfont.h"
#include "korvexresources.h"
#include "testfiles.h"

#include <QtTest>
#include <QtWidgets>

namespace {

// Latin words in a text for users, without shortcut keys and the names of color
// models that have no Chinese form.
bool isUntranslated(QString text)
{
    text = text.section('\t', 0, 0);
    text.remove(QRegularExpression("\\(&\\w\\)|<[^>]*>|\\b(HTML|RGB|HSV)\\b"));
    return text.contains(QRegularExpression("[A-Za-z]{2,}")) &&
           !text.contains(QRegularExpression("[\\x{4e00}-\\x{9fff}]"));
}

void checkChinese(const QStringList &texts, int minCount)
{
    QVERIFY(texts.size() >= minCount);
    for (const QString &text : texts)
        QVERIFY2(!isUntranslated(text), qPrintable(text));
}

// Of the window or menu, and of all in it but fields.
QStringList textsOf(const QWidget &window)
{
    QStringList texts{window.windowTitle()};
    for (const QObject *object : window.findChildren<QObject *>())
        if (!object->inherits("QLineEdit"))
            texts << object->property("text").toString() << object->property("toolTip").toString();
    texts.removeAll(QString());
    return texts;
}

// The box around what is painted, in pixels.
QRect inkBox(const QImage &image)
{
    QRect box;
    for (int i = 0; i < image.width() * image.height(); ++i)
        if (qAlpha(image.pixel(i % image.width(), i / image.width())) > 96)
            box |= QRect(i % image.width(), i / image.width(), 1, 1);
    return box;
}

} // namespace

class TestResources : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initKorvexResources();
        QLocale::setDefault(QLocale("zh_CN"));
        QVERIFY(m_translator.load(":/resources/qm/qt_zh_CN.qm")); // this catalogue and no other
        QVERIFY(QCoreApplication::installTranslator(&m_translator));
        QCOMPARE(QImage(":/resources/images/app_logo.png").size(), QSize(256, 256));
    }

    void glyphs_data()
    {
        // From the header, so that one added without a drawing is found.
        const QByteArray header = contentOf(KORVEX_SOURCE_DIR "/shell/base/iconfont.h");
        QTest::addColumn<ushort>("code");
        const QRegularExpression value("(\\w+)\\s*=\\s*0x([0-9A-Fa-f]{4})\\b");
        for (auto found = value.globalMatch(header); found.hasNext();) {
            const auto glyph = found.next();
            QTest::newRow(qPrintable(glyph.captured(1))) << glyph.captured(2).toUShort(nullptr, 16);
        }
    }

    // Each a square of its own, painted in its middle; but for a pixel that
    // smoothing adds, as on Windows.
    void glyphs()
    {
        QFETCH(ushort, code);
        const QFont font = IconFont::font(16);
        QVERIFY(QRawFont::fromFont(font).supportsCharacter(QChar(code)));
        QCOMPARE(QFontMetrics(font).height(), 16);
        QCOMPARE(QFontMetrics(font).horizontalAdvance(QChar(code)), 16);
        for (const int size : {16, 64}) {
            const QRect box =
                inkBox(IconFont::pixmap(IconFont::Glyph(code), Qt::black, size, 2 * size).toImage());
            QVERIFY(!box.isEmpty());
            QVERIFY(QRect(size / 2, size / 2, size, size).adjusted(-1, -1, 1, 1).contains(box));
            const QPointF offset = QRectF(box).center() - QPointF(size, size);
            QVERIFY(qAbs(offset.x()) <= 1 && qAbs(offset.y()) <= 1);
        }
    }

    void menusAndDialogsAreChinese()
    {
        checkChinese(textsOf(*std::unique_ptr<QMenu>(QLineEdit().createStandardContextMenu())), 7);
        checkChinese(textsOf(*std::unique_ptr<QMenu>(QPlainTextEdit().createStandardContextMenu())), 7);
        QFileDialog files;
        files.setOption(QFileDialog::DontUseNativeDialog);
        checkChinese(textsOf(files), 12);
        files.setAcceptMode(QFileDialog::AcceptSave);
        checkChinese(textsOf(files), 12);
        QColorDialog colors;
        colors.setOption(QColorDialog::DontUseNativeDialog);
        checkChinese(textsOf(colors), 12);
        const QMessageBox message(QMessageBox::Question, "题", "文", QMessageBox::Yes | QMessageBox::Cancel);
        checkChinese(textsOf(message), 3);
        QCOMPARE(message.button(QMessageBox::Cancel)->text(), QString("取消"));
    }

    // Of the classes whose errorString() the program shows.
    void errorsAreChinese()
    {
        const QList<QPair<const char *, const char *>> texts{
            {"QSerialPort", "Error writing to device"},
            {"QSerialPort", "Custom baud rate is not supported"},
            {"QAbstractSocket", "Connection refused"},
            {"QNativeSocketEngine", "The bound address is already in use"},
            {"QNetworkReply", "Error transferring %1 - server replied: %2"},
            {"QHttp", "Connection closed"},
            {"QIODevice", "No space left on device"},
            {"QFile", "Cannot open for output: %1"}};
        for (const auto &[context, text] : texts)
            QVERIFY2(!isUntranslated(QCoreApplication::translate(context, text)), text);
        // Words that Qt's catalogue has others for.
        QCOMPARE(QCoreApplication::translate("QFileSystemModel", "Size"), QString("大小"));
    }

private:
    QTranslator m_translator;
};

QTEST_MAIN(TestResources)
#include "test_resources.moc"
