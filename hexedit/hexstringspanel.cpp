#include "hexstringspanel.h"

#include "hexhitlist.h"
#include "hexstrings.h"
#include "qhexedit.h"
#include "qtmessagetip.h"
#include "settings.h"
#include "textcodec.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <memory>

namespace {

struct Encoding
{
    const char *name;
    HexStrings::Encoding bit;
    int codec; // of HexHit
};

constexpr Encoding kEncodings[] = {{"ASCII", HexStrings::Ascii, -1},
                                   {"UTF-8", HexStrings::Utf8, TextCodec::Utf8},
                                   {"UTF-16LE", HexStrings::Utf16Le, -2},
                                   {"UTF-16BE", HexStrings::Utf16Be, -3},
                                   {"GB18030", HexStrings::Gb18030, TextCodec::Gb18030}};

int codecOf(HexStrings::Encoding bit)
{
    for (const Encoding &encoding : kEncodings)
        if (encoding.bit == bit)
            return encoding.codec;
    return -1;
}

} // namespace

HexStringsPanel::HexStringsPanel(QHexEdit *edit, QWidget *parent)
    : QWidget(parent)
    , m_edit(edit)
    , m_minLength(new QSpinBox(this))
    , m_search(new QPushButton(QStringLiteral("列出字符串"), this))
    , m_list(new HexHitList(edit, "hexStrings", QStringLiteral("字符串"), this))
{
    setObjectName(QStringLiteral("hexStringsPanel"));
    for (const Encoding &encoding : kEncodings) {
        auto *box = new QCheckBox(QLatin1String(encoding.name), this);
        box->setObjectName(QStringLiteral("check_") + QLatin1String(encoding.name));
        box->setChecked(Settings::instance().hexEditPage.stringCodes & encoding.bit);
        connect(box, &QCheckBox::toggled, this, &HexStringsPanel::storeEncodings);
        m_list->addTool(box);
        m_encodings.append(box);
    }
    m_minLength->setObjectName(QStringLiteral("spinStringLength"));
    m_minLength->setRange(1, 1000);
    m_minLength->setAccessibleName(QStringLiteral("最短字符数"));
    auto *label = new QLabel(QStringLiteral("最短"), this);
    label->setBuddy(m_minLength);
    m_minLength->setSuffix(QStringLiteral(" 字符"));
    m_search->setObjectName(QStringLiteral("btnListStrings"));
    for (QWidget *tool : std::initializer_list<QWidget *>{label, m_minLength, m_search})
        m_list->addTool(tool);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_list, 1);
    m_memory.add(m_minLength, &Settings::instance().hexEditPage.stringLength);
    connect(m_search, &QPushButton::clicked, this, &HexStringsPanel::search);
    connect(edit, &QHexEdit::stateChanged, this, &HexStringsPanel::update);
    clear();
    update();
}

void HexStringsPanel::clear()
{
    m_list->clear(QStringLiteral("列出内容中的字符串，单击可跳转"));
}

void HexStringsPanel::update()
{
    m_search->setEnabled(m_edit->busyReason().isEmpty());
}

void HexStringsPanel::storeEncodings()
{
    int bits = 0;
    for (int i = 0; i < m_encodings.size(); ++i)
        if (m_encodings.at(i)->isChecked())
            bits |= kEncodings[i].bit;
    Settings::instance().hexEditPage.stringCodes.change(bits);
}

void HexStringsPanel::search()
{
    const int bits = Settings::instance().hexEditPage.stringCodes;
    if (bits == 0) {
        QtMessageTip::showBelow(m_search, QStringLiteral("请至少选择一种编码"));
        return;
    }
    const auto job = std::make_shared<HexStrings>(m_edit->document(), bits, m_minLength->value());
    m_edit->task()->start({QStringLiteral("正在列出字符串"),
                           [job] { return job->step() ? SlicedTask::Step::Running : SlicedTask::Step::Done; },
                           [job] { return job->permille(); },
                           [this, job](bool done) {
                               std::vector<HexHit> hits;
                               const bool isCut = job->isCut();
                               for (const HexStrings::Text &text : job->takeTexts())
                                   hits.push_back({text.address, text.length, codecOf(text.encoding)});
                               QString summary = QStringLiteral("%1个字符串").arg(hits.size());
                               if (isCut)
                                   summary += QStringLiteral("，之后的没有列出");
                               else if (!done)
                                   summary += QStringLiteral("，已停止");
                               m_list->show(std::move(hits), summary);
                           },
                           {},
                           8});
}
