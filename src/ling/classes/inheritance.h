// What the reading and the changing of classes share.
#pragma once

#include <mutex>

namespace ling::internal {

// Serialises changes of classes. Changes are rare and run no code but the runtime's.
std::mutex& class_change_lock();

}  // namespace ling::internal
