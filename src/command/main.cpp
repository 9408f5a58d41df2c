// ling: a small host that runs Python inside the runtime.
#include "command/commands.h"
#include "command/platform.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace {

using ling::command::session_options;

// The command line while it is being read.
struct command_line {
  session_options options;
  std::string text;  // of `eval` and `exec`, the name for `inspect`
  bool json = false;
};

constexpr char run_help[] =
    R"(Run a Python file.
Usage: ling run FILE [ARG...]

FILE is the program and each ARG an argument for it, as with python3: a script, compiled code, or a folder
or an archive with a __main__.py. The exit status is that of the program: 0 on success, 1 when it failed,
with a traceback on standard error.
)";

CLI::App* add_run(CLI::App& app) {
  CLI::App* run = app.add_subcommand("run", "Run a Python file");
  // Everything from FILE on belongs to the program, whatever it looks like; no option can describe that.
  run->prefix_command();
  run->formatter_fn([](const CLI::App*, std::string, CLI::AppFormatMode) { return std::string(run_help); });
  return run;
}

void add_file_option(CLI::App& app, const char* name, const char* what, auto& value) {
  app.add_option(name, value, what)
      ->type_name("FILE")
      ->allow_extra_args(false)
      ->check(CLI::Validator(CLI::ExistingFile).description(""));
}

const std::map<std::string, std::int64_t> log_levels = {
    {"debug",    10       },
    {"info",     20       },
    {"warning",  30       },
    {"error",    40       },
    {"critical", 50       },
    {"off",      INT64_MAX},
};

void add_log_level(CLI::App& app, std::int64_t& level) {
  app.add_option_function<std::string>(
         "--log-level", [&level](const std::string& name) { level = log_levels.at(name); },
         "Drop log records below debug, info, warning, error or critical; off drops all")
      ->type_name("LEVEL")
      ->allow_extra_args(false)
      ->check(CLI::IsMember(&log_levels).description(""));
}

CLI::App* add_text_command(CLI::App& app, const char* name, const char* what, const char* text_name,
                           std::string& text) {
  CLI::App* command = app.add_subcommand(name, what);
  command->add_option(text_name, text, std::string("The ") + text_name + " to evaluate")->required();
  return command;
}

CLI::App* add_inspect(CLI::App& app, command_line& given) {
  CLI::App* inspect = app.add_subcommand("inspect", "Show what the host sees of a module, a class or a callable");
  inspect->add_option("NAME", given.text, "The full name, such as python.datetime or ling.List")->required();
  inspect->add_flag("--json", given.json, "Print everything, as JSON");
  return inspect;
}

// The program's arguments, or nothing when they are no program's.
std::vector<std::string> program_of(const CLI::App& run) {
  std::vector<std::string> arguments = run.remaining();
  if (arguments.empty()) {
    throw CLI::RequiredError("FILE");
  }
  if (arguments.front().starts_with("-")) {
    throw CLI::ExtrasError(run.get_name(), {arguments.front()});
  }
  return arguments;
}

int run_command(int argc, char** argv) {
  command_line given;
  given.options.module_file =
      (ling::command::program_directory(argv[0]) / CORVANTIS_MODULE_PATH).lexically_normal().string();

  CLI::App app("Runs and evaluates Python inside the object runtime ling.", "ling");
  app.set_version_flag("--version", "ling " LING_VERSION, "Print the version and exit");
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
  add_file_option(app, "--load", "Load this plug-in first; repeatable", given.options.plug_ins);
  add_file_option(app, "--module", "The language module, when it is not where the build puts it",
                  given.options.module_file);
  add_log_level(app, given.options.log_level);
  app.require_subcommand(1);
  app.footer("ling COMMAND --help says more about a command.");

  const CLI::App* run = add_run(app);
  const CLI::App* eval = add_text_command(app, "eval", "Print the value of a Python expression", "EXPR", given.text);
  const CLI::App* exec =
      add_text_command(app, "exec", "Run code as the body of a function and print what it returns", "CODE", given.text);
  const CLI::App* inspect = add_inspect(app, given);

  try {
    app.parse(argc, argv);
    if (run->parsed()) {
      return ling::command::run_file(given.options, program_of(*run));
    }
    if (eval->parsed()) {
      return ling::command::evaluate_expression(given.options, given.text);
    }
    if (inspect->parsed()) {
      using ling::command::description_format;
      return ling::command::inspect(given.options, given.text,
                                    given.json ? description_format::json : description_format::text);
    }
    return exec->parsed() ? ling::command::execute_code(given.options, given.text) : ling::command::wrong_usage;
  } catch (const CLI::ParseError& error) {
    // Help and version come this way, too.
    return app.exit(error) == 0 ? ling::command::success : ling::command::wrong_usage;
  }
}

}  // namespace

int main(int argc, char** argv) {
  ling::command::prepare_locale();
  return run_command(argc, argv);
}
