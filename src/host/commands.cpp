// The commands that run Python and end.
#include "host/commands.h"

#include "ling/reflection.h"

#include <cstdio>

namespace ling::host {

namespace {

// A program from its start to its end around what `body` does with it.
template <class Body>
int with_program(const session_options& options, const std::vector<std::string>& arguments, Body body) {
  python_session session;
  if (const Result<None> opened = session.open(options); opened.is_error()) {
    std::fprintf(stderr, "ling: %s\n", opened.error().message().c_str());
    return failure;
  }
  int status = session.begin(arguments);
  if (status == success) {
    status = body(session);
  }
  return session.finish(status);
}

int show_or_report(const python_session& session, const Any& result) {
  if (is_error_result(result)) {
    return session.report(Error::unchecked(result));
  }
  const Result<String> text = result_unwrap_lazy(display(result));
  return text.is_error() ? session.report(text.error()) : session.show(text.value());
}

}  // namespace

int run_file(const session_options& options, const std::vector<std::string>& arguments) {
  return with_program(options, arguments, [](const python_session& session) { return session.run_file(); });
}

int evaluate_expression(const session_options& options, const std::string& expression) {
  return with_program(options, {""}, [&](const python_session& session) {
    return show_or_report(session, session.evaluate_expression(expression));
  });
}

int execute_code(const session_options& options, const std::string& code) {
  return with_program(options, {"-c"}, [&](const python_session& session) {
    const Any result = session.evaluate(code);
    return is_none(result) ? int{success} : show_or_report(session, result);
  });
}

int inspect(const session_options& options, const std::string& name, description_format format) {
  return with_program(options, {""}, [&](const python_session& session) {
    const Result<String> description = describe(name, format);
    if (description.is_error()) {
      std::fprintf(stderr, "ling: %s\n", description.error().message().c_str());
      return int{failure};
    }
    return session.show(description.value());
  });
}

}  // namespace ling::host
