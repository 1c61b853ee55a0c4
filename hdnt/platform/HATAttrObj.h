#pragma once

/// Base of everything that carries attributes. Empty and not polymorphic: it takes no room in the classes below it.
class HATAttrObj {
protected:
    HATAttrObj() = default;
    ~HATAttrObj() = default;
};
