#include "networkpagetest.h"

#include "freeport.h"
#include "korvexresources.h"
#include "qtmessagetip.h"
#include "qttexteditinput.h"

void NetworkPageTest::init()
{
    initKorvexResources();
    makePage(900, 600);
    Settings::instance().textCodec = 0;
}

void NetworkPageTest::cleanup()
{
    DialogAnswers::instance() = DialogAnswers();
    if (QtMessageTip::current())
        QtMessageTip::current()->close();
    m_page.reset();
}

QStringList NetworkPageTest::to(quint16 port, const QStringList &more, const QString &address)
{
    return QStringList{"--address", address, "--net-port", QString::number(port), "--delay", "0"} + more;
}

quint16 NetworkPageTest::open(Type type, quint16 port)
{
    choose(type);
    // Another program may take a free port before the page does.
    for (int attempt = 0; attempt < 20; ++attempt) {
        const quint16 tried = port ? port : freePort();
        write("editPort", QString::number(tried));
        doubleClick("btnOpen");
        if (type == Client || !fieldsAreEnabled(true))
            return tried;
    }
    return 0;
}

void NetworkPageTest::send(const QString &text)
{
    child<QtTextEditInput>("textEditSend")->setPlainText(text);
    click("btnSingleSend");
}

bool NetworkPageTest::fieldsAreEnabled(bool enabled) const
{
    const auto fields = {"comboNetType", "comboLocalAddress", "editServerAddress", "editPort"};
    return std::all_of(fields.begin(), fields.end(),
                       [&](const char *name) { return child<QWidget>(name)->isEnabled() == enabled; });
}

bool NetworkPageTest::wasTold(const QString &text, int kind) const
{
    return m_notices->contains(QList<QVariant>{text, kind});
}

QStringList NetworkPageTest::clients() const
{
    QStringList names;
    for (int i = 0; i < child<QComboBox>("comboClients")->count(); ++i)
        names.append(child<QComboBox>("comboClients")->itemText(i));
    return names;
}
