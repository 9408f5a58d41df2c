// The commands that run Python and end.
#include "command/commands.h"

#include "ling/reflection.h"

#include <cstdio>
#include <filesystem>
#include <new>
#include <system_error>

namespace ling::command {

namespace {

int fail(const Error& error) {
  std::fprintf(stderr, "ling: %s\n", error.message().c_str());
  return failure;
}

// A program from its start to its end around what `body` does with it.
template <class Body>
int with_program(const session_options& options, const program_arguments& arguments, Body body) {
  python_session session;
  if (const Result<None> opened = session.open(options); opened.is_error()) {
    return fail(opened.error());
  }
  const Result<Boolean> is_package = session.prepare(arguments);
  if (is_package.is_error()) {
    return fail(is_package.error());
  }
  program& running = program::instance();
  if (const Result<None> started = running.start(); started.is_error()) {
    return fail(started.error());
  }
  outcome how{failure};
  try {
    how = body(session, running, is_package->value());
  } catch (const std::bad_alloc&) {
    std::fputs("ling: out of memory\n", stderr);  // which is no reason to lose the program's output
  }
  return running.end(how);
}

outcome report(const python_session& session, const program& running, const Error& error) {
  session.hand_over(error);
  if (const auto reported = running.report_handed_over()) {
    return *reported;
  }
  const String text = error.stack().empty() ? error.message() : error.stack();
  std::fprintf(stderr, "%s\n", text.trimmed().c_str());
  return {failure};
}

outcome show_or_report(const python_session& session, const program& running, const Any& result) {
  if (is_error_result(result)) {
    return report(session, running, Error::unchecked(result));
  }
  const Result<String> text = result_unwrap_lazy(display(result));
  return text.is_error() ? report(session, running, text.error()) : running.print(text.value());
}

// As python3 names it in `__file__` and in tracebacks.
std::string absolute(const std::string& file) {
  std::error_code failure;
  const std::filesystem::path path = std::filesystem::absolute(file, failure);
  return failure ? file : path.string();
}

}  // namespace

int run_file(const session_options& options, const std::vector<std::string>& arguments) {
  const std::string file = absolute(arguments.front());
  return with_program(options, {arguments, file}, [&](const python_session&, const program& running, bool is_package) {
    return is_package ? running.run_package() : running.run_file(file);
  });
}

int evaluate_expression(const session_options& options, const std::string& expression) {
  return with_program(options, {{""}, {}}, [&](const python_session& session, const program& running, bool) {
    return show_or_report(session, running, session.evaluate_expression(expression));
  });
}

int execute_code(const session_options& options, const std::string& code) {
  return with_program(options, {{"-c"}, {}}, [&](const python_session& session, const program& running, bool) {
    const Any result = session.evaluate(code);
    return is_none(result) ? outcome{} : show_or_report(session, running, result);
  });
}

int inspect(const session_options& options, const std::string& name, description_format format) {
  return with_program(options, {{""}, {}}, [&](const python_session&, const program& running, bool) {
    const Result<String> description = describe(name, format);
    return description.is_error() ? outcome{fail(description.error())} : running.print(description.value());
  });
}

}  // namespace ling::command
