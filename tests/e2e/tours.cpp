#include "tours.h"

#include "stage.h"

#include <QTest>

Tour::Tour() = default;
Tour::~Tour() = default;

void Tour::init()
{
    m_stage = std::make_unique<Stage>();
    QVERIFY(m_stage->isReady());
}

void Tour::cleanup()
{
    m_stage.reset();
}
