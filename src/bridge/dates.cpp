// Dates and times across the border.
#include "bridge/dates_and_decimals.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/instance_test.h"
#include "python/module_attribute.h"
#include "python/pending_exception.h"
#include "python/python_name.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

namespace ling::cpython {

namespace {

// Each direction keeps the classes that it found first.
struct datetime_classes {
  module_attribute date{"datetime", "date"};
  module_attribute time{"datetime", "time"};
  module_attribute date_time{"datetime", "datetime"};
};
constinit const datetime_classes classes_to_python;
constinit const datetime_classes classes_from_python;

// --- to Python -------------------------------------------------------------------------------------------------------

// The fold is a keyword of the constructors. Nearly always it is 0, which they assume.
PyObjectPtr construct(PyObject* of_class, const PyObjectPtr& fields, int fold) {
  const PyObjectPtr keywords(fold == 0 ? nullptr : Py_BuildValue("{s:i}", "fold", fold));
  const bool built = fields && (fold == 0 || keywords);
  return PyObjectPtr(built ? PyObject_Call(of_class, fields.get(), keywords.get()) : nullptr);
}

int microseconds(const Time& time) noexcept { return static_cast<int>(time.nanoSeconds() / 1'000); }

// --- from Python -----------------------------------------------------------------------------------------------------

constinit const struct {
  python_name year{"year"}, month{"month"}, day{"day"};
  python_name hour{"hour"}, minute{"minute"}, second{"second"}, microsecond{"microsecond"}, fold{"fold"};
  python_name utcoffset{"utcoffset"}, tzname{"tzname"}, total_seconds{"total_seconds"};
} names;

// What an attribute or a method of a hostile object raises says only that there is no such field.
PyObjectPtr taken(PyObjectPtr result) {
  if (!result) {
    tolerate_exception();
  }
  return result;
}
PyObjectPtr call(PyObject* object, const python_name& method) {
  PyObject* const name = method.get();
  return taken(PyObjectPtr(name == nullptr ? nullptr : PyObject_CallMethodObjArgs(object, name, nullptr)));
}

std::optional<long> integer_of(PyObject* object) {
  const long value = PyLong_AsLong(object);
  if (value == -1 && PyErr_Occurred() != nullptr) {
    tolerate_exception();
    return std::nullopt;
  }
  return value;
}

std::optional<long> field_of(PyObject* object, const python_name& field) {
  const PyObjectPtr value = taken(field.of(object));
  return value ? integer_of(value.get()) : std::nullopt;
}

// An eight-bit field of the runtime.
std::int64_t narrowed(long value) noexcept { return static_cast<std::uint8_t>(value); }

// The seconds of a time difference, when they are a number.
std::optional<double> total_seconds(PyObject* difference) {
  const PyObjectPtr seconds = call(difference, names.total_seconds);
  if (!seconds) {
    return std::nullopt;
  }
  if (PyFloat_Check(seconds.get())) {
    return PyFloat_AsDouble(seconds.get());
  }
  const auto whole = PyLong_Check(seconds.get()) ? integer_of(seconds.get()) : std::nullopt;
  return whole ? std::optional(static_cast<double>(*whole)) : std::nullopt;
}

// The offset from UTC in seconds. A time with an offset that the runtime cannot express becomes one without: scripts
// rely on zones west of UTC being dropped, not refused.
std::optional<std::int64_t> offset_of(PyObject* object) {
  const PyObjectPtr difference = call(object, names.utcoffset);
  const auto seconds = difference && difference.get() != Py_None ? total_seconds(difference.get()) : std::nullopt;
  double whole = 0;
  if (!seconds || !(*seconds >= 0) || std::modf(*seconds, &whole) != 0.0) {
    return std::nullopt;
  }
  // What is too large must stay so, and not overflow.
  return static_cast<std::int64_t>(std::min(whole, 1e15));
}

// Only a text is converted: another object could again be a time, whose zone is named by a time, and so on.
String zone_name_of(PyObject* object) {
  const PyObjectPtr name = call(object, names.tzname);
  const auto text = String::cast(name && PyUnicode_Check(name.get()) ? from_python_locked(name.get()) : Any());
  return text ? *text : String();
}

// What a step of the conversion yields: a value, an Error, or nothing when a field cannot be read.

Any date_from(PyObject* object) {
  const auto year = field_of(object, names.year);
  const auto month = field_of(object, names.month);
  const auto day = field_of(object, names.day);
  return year && month && day ? Any(Date::from(*year, narrowed(*month), narrowed(*day))) : Any();
}

Any time_from(PyObject* object) {
  const auto hour = field_of(object, names.hour);
  const auto minute = field_of(object, names.minute);
  const auto second = field_of(object, names.second);
  const auto microsecond = field_of(object, names.microsecond);
  if (!hour || !minute || !second || !microsecond) {
    return {};
  }
  const long fold = field_of(object, names.fold).value_or(0);
  constexpr std::int64_t too_many = 10'000'000;
  const std::int64_t nanoseconds = std::clamp<std::int64_t>(*microsecond, -too_many, too_many) * 1'000;
  const auto offset = offset_of(object);
  return offset ? Time::from(narrowed(*hour), narrowed(*minute), narrowed(*second), nanoseconds, offset,
                             zone_name_of(object), narrowed(fold))
                : Time::from(narrowed(*hour), narrowed(*minute), narrowed(*second), nanoseconds);
}

Any date_time_from(PyObject* object) {
  const Any date = date_from(object);
  const Any time = date.empty() ? Any() : time_from(object);
  if (time.empty() || is_error_result(time)) {
    return time;
  }
  return is_error_result(date) ? date : Any(DateTime(Date::unchecked(date), Time::unchecked(time)));
}

// The order matters: a `datetime` is a `date` as well.
struct datetime_row {
  const module_attribute& python_class;
  Any (*convert)(PyObject* object);
};
const datetime_row rows[] = {
    {classes_from_python.date_time, &date_time_from},
    {classes_from_python.time,      &time_from     },
    {classes_from_python.date,      &date_from     },
};

}  // namespace

PyObjectPtr date_to_python(const Date& date) {
  PyObject* const of_class = classes_to_python.date.get();
  return PyObjectPtr(
      of_class == nullptr ? nullptr : PyObject_CallFunction(of_class, "iii", date.year(), date.month(), date.day()));
}

PyObjectPtr time_to_python(const Time& time) {
  PyObject* const of_class = classes_to_python.time.get();
  if (of_class == nullptr) {
    return {};
  }
  const PyObjectPtr fields(Py_BuildValue("(iiii)", time.hour(), time.minute(), time.second(), microseconds(time)));
  return construct(of_class, fields, time.fold());
}

PyObjectPtr date_time_to_python(const DateTime& value) {
  PyObject* const of_class = classes_to_python.date_time.get();
  if (of_class == nullptr) {
    return {};
  }
  const Date date = value.date();
  const Time time = value.time();
  const PyObjectPtr fields(Py_BuildValue("(iiiiiii)", date.year(), date.month(), date.day(), time.hour(), time.minute(),
                                         time.second(), microseconds(time)));
  return construct(of_class, fields, time.fold());
}

Any date_or_time_from_python(PyObject* object) {
  for (const datetime_row& row : rows) {
    PyObject* const python_class = row.python_class.get();
    if (python_class != nullptr && is_instance(object, python_class)) {
      if (Any value = row.convert(object); !value.empty()) {
        return value;
      }
    }
  }
  return {};
}

}  // namespace ling::cpython
