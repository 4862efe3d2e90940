#include "qtmessagebox.h"

#include "dialoganswers.h"
#include "iconfont.h"
#include "qttitlebar.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <QVariant>
#include <optional>

namespace {

constexpr int textWidth = 360;
constexpr int longestTextHeight = 320;

struct IconLook
{
    QColor color;
    IconFont::Glyph glyph;
    int glyphSize;
    int side;
};

std::optional<IconLook> iconFor(int type)
{
    const QColor green(0x34, 0xc3, 0x88);
    const QColor orange(0xf8, 0x69, 0x34);
    switch (type) {
    case QtMessageBox::Done:
    case QtMessageBox::Success:
        return IconLook{green, IconFont::CheckCircle, 44, 50};
    case QtMessageBox::Question:
        return IconLook{orange, IconFont::QuestionCircle, 44, 50};
    case QtMessageBox::Warning:
        return IconLook{orange, IconFont::AlertCircle, 44, 50};
    case QtMessageBox::Information:
        return IconLook{green, IconFont::Information, 50, 60};
    case QtMessageBox::Failure:
        return IconLook{orange, IconFont::CheckCircle, 50, 60};
    default:
        return std::nullopt;
    }
}

constexpr ushort breakMark = 0x200B;

// A label wraps at spaces and between Chinese characters only; a path or a
// line of digits gets places to break that are not seen.
QString breakable(const QString &text)
{
    constexpr int longestRun = 24;
    QString result;
    int run = 0;
    for (const QChar c : text) {
        result += c;
        run = c.isSpace() || c.unicode() > 0x2E80 ? 0 : run + 1;
        if (run >= longestRun || c == QLatin1Char('/') || c == QLatin1Char('\\')) {
            result += QChar(breakMark);
            run = 0;
        }
    }
    return result;
}

} // namespace

QtMessageBox::QtMessageBox(QWidget *parent)
    : QtFramelessDialog(QStringLiteral("提示"), parent)
    , m_icon(new QLabel(this))
    , m_label(new QLabel)
    , m_ok(new QPushButton(QStringLiteral("确定"), this))
    , m_discard(new QPushButton(QStringLiteral("不保存"), this))
    , m_cancel(new QPushButton(QStringLiteral("取消"), this))
{
    titleBar()->setObjectName(QStringLiteral("msgBoxTitle"));
    m_icon->setObjectName(QStringLiteral("msgBoxIcon"));
    m_label->setObjectName(QStringLiteral("msgBoxText"));
    m_ok->setObjectName(QStringLiteral("btnOk"));
    m_discard->setObjectName(QStringLiteral("btnDiscard"));
    m_cancel->setObjectName(QStringLiteral("btnCancel"));
    m_label->setTextFormat(Qt::PlainText);
    m_label->setWordWrap(true);
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_ok->setProperty("primary", true);

    auto *scroll = new QScrollArea(this);
    scroll->setObjectName(QStringLiteral("msgBoxScroll"));
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(m_label);

    auto *message = new QHBoxLayout;
    message->setSpacing(16);
    message->addWidget(m_icon, 0, Qt::AlignTop);
    message->addWidget(scroll, 1);
    body()->addLayout(message, 1);

    auto *buttons = new QHBoxLayout;
    buttons->setContentsMargins(0, 8, 0, 0);
    buttons->setSpacing(8);
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(m_discard);
    buttons->addWidget(m_cancel);
    body()->addLayout(buttons);
    for (QPushButton *button : {m_ok, m_discard, m_cancel})
        button->setMinimumWidth(80);
    setButtons(OkCancel);

    connect(QApplication::clipboard(), &QClipboard::changed, this, &QtMessageBox::dropBreakMarks);
    connect(m_ok, &QPushButton::clicked, this, &QtMessageBox::SltBtnOkClicked);
    connect(m_discard, &QPushButton::clicked, this, [this] { done(Discard); });
    connect(m_cancel, &QPushButton::clicked, this, &QtMessageBox::SltBtnCancelClicked);
}

void QtMessageBox::setMessage(const QString &title, const QString &text, int type)
{
    setTitle(title.isEmpty() ? QStringLiteral("提示") : title);
    m_text = text;
    m_label->setText(breakable(text));

    const std::optional<IconLook> look = iconFor(type);
    m_icon->setVisible(look.has_value());
    if (look)
        m_icon->setPixmap(IconFont::pixmap(look->glyph, look->color, look->glyphSize, look->side));
    const int iconHeight = look ? look->side : 0;

    // As high as the text needs at the fixed width, up to where it scrolls.
    m_label->ensurePolished();
    const int needed = m_label->heightForWidth(textWidth);
    auto *scroll = findChild<QScrollArea *>(QStringLiteral("msgBoxScroll"));
    scroll->setFixedSize(needed > longestTextHeight ? textWidth + 16 : textWidth,
                         qBound(iconHeight, needed, longestTextHeight));
}

// By key, menu or mouse: a path with marks in it does not open.
void QtMessageBox::dropBreakMarks(QClipboard::Mode mode)
{
    QClipboard *const clipboard = QApplication::clipboard();
    const QString selected = m_label->selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    QString text = clipboard->text(mode);
    if (text == selected && text.contains(QChar(breakMark)))
        clipboard->setText(text.remove(QChar(breakMark)), mode);
}

void QtMessageBox::setButtons(Buttons buttons)
{
    m_ok->setText(buttons == SaveDiscardCancel ? QStringLiteral("保存") : QStringLiteral("确定"));
    m_discard->setVisible(buttons == SaveDiscardCancel);
    m_cancel->setVisible(buttons != OkOnly);
    // Where Return would overwrite a file, it leaves everything as it is.
    QPushButton *harmless = buttons == SaveDiscardCancel ? m_cancel : m_ok;
    harmless->setDefault(true);
    harmless->setFocus(); // a button that has it becomes the default one
}

int QtMessageBox::question(QWidget *parent, const QString &title, const QString &text)
{
    return run(parent, title, text, Question, OkCancel);
}

int QtMessageBox::warning(QWidget *parent, const QString &title, const QString &text, Buttons buttons)
{
    return run(parent, title, text, Warning, buttons);
}

int QtMessageBox::information(QWidget *parent, const QString &title, const QString &text)
{
    return run(parent, title, text, Information, OkOnly);
}

QtMessageBox::SaveAnswer QtMessageBox::saveQuestion(QWidget *parent, const QString &title,
                                                    const QString &text)
{
    switch (run(parent, title, text, Question, SaveDiscardCancel)) {
    case Save:
        return Save;
    case Discard:
        return Discard;
    default:
        return Cancel;
    }
}

void QtMessageBox::SltBtnOkClicked()
{
    done(QDialog::Accepted);
}

void QtMessageBox::SltBtnCancelClicked()
{
    done(QDialog::Rejected);
}

int QtMessageBox::run(QWidget *parent, const QString &title, const QString &text, int type, Buttons buttons)
{
    if (const auto &answer = DialogAnswers::instance().message)
        return answer(title, text, type);
    QtMessageBox box(parent ? parent->window() : nullptr);
    box.setMessage(title, text, type);
    box.setButtons(buttons);
    return box.exec();
}
