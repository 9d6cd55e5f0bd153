#include "supervisor/InputOrder.h"

#include <utility>

CInputOrder::CInputOrder(const CDoneIndex& done, Reader reader, Taker taker)
    : m_done(done), m_reader(std::move(reader)), m_taker(std::move(taker))
{
}

void CInputOrder::Done(const DoneFile& done, bool written)
{
    if (done.record.number != m_next) return;
    ++m_next;
    m_taker(done, written);
    Advance();
}

void CInputOrder::Finish()
{
    for (; m_next <= m_done.Total(); ++m_next)
        if (m_done.IsDone(m_next)) PassOn(m_next);
}

void CInputOrder::Advance()
{
    for (; m_next <= m_done.Total() && m_done.IsDone(m_next); ++m_next) PassOn(m_next);
}

void CInputOrder::PassOn(int number)
{
    const DonePlace place = m_done.At(number);
    const auto done = m_reader(place);
    if (done && done->record.number == number) return m_taker(*done, place.logged);
    m_failed = true;
}
