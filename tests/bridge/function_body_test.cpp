// Code as the body of a function: what Python reads is the code as it stood, and nothing of it outside.
#include "python/function_body.h"

#include "bridge/python.h"

namespace ling::cpython {
namespace {

using FunctionBody = PythonTest;

// Says what is wrong with the text that has the code as the body of its function, if anything: Python's own reading of
// the code decides which statements they must be. What Python refuses must be refused, with one exception: code all of
// which is indented.
constexpr const char* compare_readings = R"(
import ast, textwrap, warnings
warnings.simplefilter('ignore')
def statements_of(text):
    try:
        return [ast.dump(statement) for statement in text()]
    except (SyntaxError, ValueError) as error:
        return type(error).__name__
def result(code, text):
    wanted = statements_of(lambda: ast.parse(code).body)
    if wanted == 'IndentationError':
        wanted = statements_of(lambda: ast.parse(textwrap.dedent(code)).body)
    tree = statements_of(lambda: ast.parse(text).body)
    if isinstance(tree, str) or isinstance(wanted, str):
        return '' if isinstance(tree, str) and isinstance(wanted, str) else f'{wanted} became {tree}'
    if len(tree) != 2:
        return f'outside of the function: {tree}'
    found = statements_of(lambda: ast.parse(text).body[0].body)
    return '' if found == (wanted or [ast.dump(ast.Pass())]) else f'{wanted} became {found}'
)";

// Pieces of which every row takes some: what ends lines, what begins them, what may pass for a literal or its end.
TEST_F(FunctionBody, IsReadAsTheCodeWas) {
  const PyObjectPtr compare = run(compare_readings);
  const std::vector<std::string> codes = {
      "",
      " \t\f\n#\n",
      "x = 1\r\n\r\nif x:\r  y = '''\r\n'''\r\n",
      "    x = 1\n    y = 2",
      // Form feeds, where Python counts columns anew.
      "\fx = 1\n\fy = 2\n",
      "if x:\n\t\f \fy\n",
      "x = '''\n\f'''\n\fy = 2",
      "x = 1\n\\\n\fy = 2",
      // First lines that are not where they belong.
      "  x = 1\ny = 2",
      "  x = 1\n y = 2",
      "if x:\ny = 1",
      // What wants more than there is.
      "x = 1 + \\",
      "x = 'a\\",
      "# a comment \\",
      "x = (1,",
      "x = '''",
      "x = '",
      "@f",
      std::string("x = 1\0\ny", 9),
      "x = 1\xe2\x80\xa8y = 2",
      // Literals.
      "x = '''a\nb\\\n'c''\\'''\n'''\ny = 2",
      "x = 'a\\\n  b\\\r\n c'\ny",
      "x = r'\\'; y = '''\\\\'''\nz = 1",
      "x = rb'''\n\\'''\n'''\ny",
      "x = 'a' 'b''''c\n'''",
      "x = '#'  # '''\ny = \"#\"\nz",
      "x = ''; y = \"\"; z = ''''''\nw",
      // Braces of f-strings, in which some versions know literals of their own.
      "x = f'{a}{{b}}' f'''{a\n}\n{{'''\ny",
      "x = f'''{a:{b}\n}'''\ny",
      "x = f\"{\"'''\"}\"\ny = 1 # '''\nz",
      "x = f'{f'{'''\n'''}'}'\ny",
      "x = Rf\"{'''\n'''}\\{a}\"\ny",
      "x = f\"\\N{DIGIT ONE}{'''\n'''}\"\ny",
      "x = f'{a['b']:{'''\n'''}>{c}}'\ny",
      "x = f'{(lambda: {'a': '''\n'''})()!r:}}}'\ny",
      "x = f'{a:}'; y = f'''{b!r:\n}'''\nz",
      "x = f'{a # '''\n}'\ny",
      "x = buf'{\"'''\"}'\ny",
      "x = f'{a:\n}' '''\n'''\ny",
  };
  for (const std::string& code : codes) {
    std::string text = "def f():\n";
    append_function_body(text, code);
    text += "g( f() )\n";
    const auto size = [](const std::string& of) { return static_cast<Py_ssize_t>(of.size()); };
    const PyObjectPtr wrong(
        PyObject_CallFunction(compare.get(), "s#s#", code.data(), size(code), text.data(), size(text)));
    EXPECT_EQ(repr(wrong), "''") << text;
  }
}

}  // namespace
}  // namespace ling::cpython
