// Logger and LogRecord: the host's log.
//
// Levels are numbers: 10 debug, 20 info, 30 warning, 40 error, 50 critical; numbers between belong to the level below.
// Records go to standard error as "time level message" until a sink is set.
//
// Threads: any.
#pragma once

#include "ling/instance.h"
#include "ling/string.h"

#include <functional>

namespace ling {

class Class_Generic;

class LING_API object_value_log_record final : public object_value_instance {
 public:
  object_value_log_record(std::int64_t level, String message);
  const std::int64_t level;
  const String message;
};

class LING_API LogRecord : public Handle<LogRecord, object_value_log_record> {
  LING_HANDLE(LogRecord, object_value_log_record)
  LogRecord(std::int64_t level, const String& message) : Handle(new object_value_log_record(level, message)) {}
  std::int64_t level() const noexcept { return object().level; }
  String message() const { return object().message; }
  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

class LING_API Logger : public Handle<Logger> {
  LING_HANDLE(Logger, object_value)
  void log(const LogRecord& record) const;
  // Replaces where records go; an empty function restores standard error. Called by logging threads, one at a time.
  void setSink(std::function<void(const LogRecord&)> sink) const;
  // Records below this level are dropped.
  void setLevel(std::int64_t level) const;
  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

// The host's logger; one object for the process.
LING_API Logger get_logger();

}  // namespace ling
