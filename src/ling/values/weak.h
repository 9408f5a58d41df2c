// The link between an object's end and the weak references to it.
#pragma once

namespace ling {

class object_value;

namespace internal {
// Makes all weak references to the object empty; called once, when the last handle is gone.
void clear_weak_references(object_value& object) noexcept;
}  // namespace internal

}  // namespace ling
