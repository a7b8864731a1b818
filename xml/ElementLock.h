#pragma once

#include "xml/SimpleXMLElement.h"

namespace xml {

// Holds an element's lock for its scope, if the element's locking is enabled.
class SimpleXMLElement::CElementLock
{
public:
    explicit CElementLock(const SimpleXMLElement& locked) noexcept : element(locked) { Enter(); }
    ~CElementLock() { Leave(); }
    CElementLock(const CElementLock&) = delete;
    CElementLock& operator=(const CElementLock&) = delete;

    void Enter() noexcept
    {
        held = element.lockingEnabled == 1;
        if (held)
            element.section.Enter();
    }

    void Leave() noexcept
    {
        if (held)
            element.section.Leave();
        held = false;
    }

private:
    const SimpleXMLElement& element;
    bool held = false;
};

} // namespace xml
