#include "gui/element_ref.h"

#include "gui/element.h"

void CVrElementRefBase::PointTo(CVrGuiElement* target) {
    if (target == m_target)
        return;
    Unlink();
    if (!target)
        return;
    m_target = target;
    m_next = target->m_refs;
    m_link = &target->m_refs;
    if (m_next)
        m_next->m_link = &m_next;
    target->m_refs = this;
}

void CVrElementRefBase::Unlink() {
    if (!m_target)
        return;
    *m_link = m_next;
    if (m_next)
        m_next->m_link = m_link;
    m_target = nullptr;
    m_next = nullptr;
    m_link = nullptr;
}
