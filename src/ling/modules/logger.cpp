// The host's log, written through spdlog.
#include "ling/logger.h"

#include "ling/detail/definitions.h"
#include "ling/published.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

namespace ling {

constinit const class_definition<LogRecord> internal::log_record_class("LogRecord", [](class_builder<LogRecord>& c) {
  c.module("ling")
      .doc("A message with its level: 10 debug, 20 info, 30 warning, 40 error, 50 critical.")
      .constructor(
          "level, message", "A record for the log.",
          [](const Class_Generic&, std::int64_t level, const String& message) { return LogRecord(level, message); })
      .property("level", "How serious it is.", &LogRecord::level)
      .property("message", "The text.", &LogRecord::message);
});

constinit const class_definition<Logger> internal::logger_class("Logger", [](class_builder<Logger>& c) {
  c.module("ling")
      .doc("The host's log.")
      .method("log", "record", "Adds a record to the log.", &Logger::log)
      .method("setLevel", "level", "Drops records below this level from now on.", &Logger::setLevel);
});

object_value_log_record::object_value_log_record(std::int64_t of_level, String text)
    : object_value_instance(internal::log_record_class.required()), level(of_level), message(std::move(text)) {}

bool LogRecord::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_log_record>(object, internal::log_record_class);
}
Type LogRecord::getType() { return Type::of(getClass()); }
Class_Generic LogRecord::getClass() { return internal::log_record_class.required(); }

namespace {

using sink_function = std::function<void(const LogRecord&)>;

struct level_row {
  std::int64_t from;
  spdlog::level::level_enum level;
};
constexpr level_row levels[] = {
    {50, spdlog::level::critical},
    {40, spdlog::level::err     },
    {30, spdlog::level::warn    },
    {20, spdlog::level::info    },
};

spdlog::level::level_enum spdlog_level(std::int64_t level) noexcept {
  for (const level_row& each : levels) {
    if (level >= each.from) {
      return each.level;
    }
  }
  return spdlog::level::debug;
}

spdlog::logger& standard_error() {
  // Not one of spdlog's registered loggers, and never destroyed: those that log while the process ends still use it.
  static spdlog::logger& logger = []() -> spdlog::logger& {
    auto& made = *new spdlog::logger("ling", std::make_shared<spdlog::sinks::stderr_sink_mt>());
    made.set_level(spdlog::level::trace);
    made.set_pattern("%Y-%m-%d %H:%M:%S.%e %l %v");
    return made;
  }();
  return logger;
}

void write_to_standard_error(const LogRecord& record) {
  const String text = record.message();
  standard_error().log(spdlog_level(record.level()), spdlog::string_view_t(text.view().data(), text.size()));
}

// Whether this thread is inside the host's sink.
constinit thread_local bool inside_sink = false;

// None, or what the sink has thrown.
Any call_sink(const sink_function& sink, const LogRecord& record) {
  inside_sink = true;
  const Any outcome = internal::guarded([&]() -> Any {
    sink(record);
    return {};
  });
  inside_sink = false;
  return outcome;
}

void deliver(const sink_function* sink, const LogRecord& record) {
  const Any failure = sink == nullptr ? Any() : call_sink(*sink, record);
  if (is_error_result(failure)) {
    write_to_standard_error(
        LogRecord(40, String("The log's sink failed: {}").arg(Error::unchecked(failure).message())));
  }
  if (sink == nullptr || is_error_result(failure)) {
    write_to_standard_error(record);
  }
}

}  // namespace

class object_value_logger final : public object_value_instance {
 public:
  object_value_logger() : object_value_instance(internal::logger_class.required(), object_traits::immortal) {}

  void set_level(std::int64_t level) noexcept { level_.store(level, std::memory_order_relaxed); }
  void set_sink(sink_function sink);
  void log(const LogRecord& record);

 private:
  void drain();

  std::atomic<std::int64_t> level_{INT64_MIN};
  // What follows is guarded by the object's lock. The sink is called one record at a time without making anybody wait:
  // whoever finds nobody at it works off what is waiting. A lock held for the time of the call would invite deadlocks,
  // as a sink may need another lock (an interpreter's) that a thread which logs is holding.
  std::shared_ptr<const sink_function> sink_;
  std::deque<LogRecord> waiting_;
  bool draining_ = false;
};

void object_value_logger::set_sink(sink_function sink) {
  std::shared_ptr<const sink_function> made;
  if (sink) {
    made = std::make_shared<const sink_function>(std::move(sink));
  }
  const std::lock_guard guard(lock_);
  sink_.swap(made);
  // The former sink dies with `made`, after the lock.
}

void object_value_logger::log(const LogRecord& record) {
  if (record.level() < level_.load(std::memory_order_relaxed)) {
    return;
  }
  bool is_for_sink = false;
  if (!inside_sink) {
    const std::lock_guard guard(lock_);
    is_for_sink = sink_ != nullptr;
    if (is_for_sink) {
      waiting_.push_back(record);
    }
  }
  // A sink's own records would come back to it for ever.
  is_for_sink ? drain() : write_to_standard_error(record);
}

void object_value_logger::drain() {
  for (bool first = true;; first = false) {
    std::shared_ptr<const sink_function> sink;
    Any record;
    {
      const std::lock_guard guard(lock_);
      if (first && draining_) {
        return;
      }
      draining_ = !waiting_.empty();
      if (!draining_) {
        return;
      }
      sink = sink_;
      record = std::move(waiting_.front());
      waiting_.pop_front();
    }
    // A record that cannot even be written must not keep those behind it.
    static_cast<void>(internal::guarded([&]() -> Any {
      deliver(sink.get(), LogRecord::unchecked(std::move(record)));
      return {};
    }));
  }
}

namespace {
object_value_logger& logger_of(const Logger& handle) noexcept {
  return static_cast<object_value_logger&>(*handle.get());
}
}  // namespace

void Logger::log(const LogRecord& record) const { logger_of(*this).log(record); }
void Logger::setSink(sink_function sink) const { logger_of(*this).set_sink(std::move(sink)); }
void Logger::setLevel(std::int64_t level) const { logger_of(*this).set_level(level); }

bool Logger::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_logger>(object, internal::logger_class);
}
Type Logger::getType() { return Type::of(getClass()); }
Class_Generic Logger::getClass() { return internal::logger_class.required(); }

Logger get_logger() {
  static constinit internal::published<object_value_logger> the_logger;
  return Logger::unchecked(Any::share(the_logger.get_or_make([] { return std::make_unique<object_value_logger>(); })));
}

}  // namespace ling
