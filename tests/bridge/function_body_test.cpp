// Code as the body of a function: what Python reads is the code as it stood, and nothing of it outside.
#include "python/function_body.h"

#include "bridge/python.h"

namespace ling::cpython {
namespace {

using FunctionBody = PythonTest;

// Whether the text is a function with the code as its body, and a call of it, as Python itself reads the code. What
// Python refuses must be refused, with one exception: code all of which is indented.
constexpr const char* compare_readings = R"(
import ast, textwrap, warnings
warnings.simplefilter('ignore')
def parsed(text):
    try:
        return ast.parse(text)
    except (SyntaxError, ValueError):
        return None
def result(code, text):
    body, found = parsed(code) or parsed(textwrap.dedent(code)), parsed(text)
    if body is None or found is None:
        return body is found
    wanted = ast.parse('def f(): pass\ng( f() )')
    wanted.body[0].body = body.body or wanted.body[0].body
    return ast.dump(found) == ast.dump(wanted)
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
      // First lines that are not where they belong.
      "  x = 1\ny = 2",
      // What wants more than there is.
      "x = 1 + \\",
      "# a comment \\",
      "x = '''",
      std::string("x = 1\0\ny", 9),
      // Literals.
      "x = '''a\nb\\\n'c''\\'''\n'''\ny = 2",
      "x = 'a\\\n  b\\\r\n c'\ny",
      "x = r'\\'; y = '''\\\\'''\nz = 1",
      "x = '#'  # '''\ny = \"#\"\nz",
      // Braces of f-strings, in which some versions know literals of their own.
      "x = f'''{a:{b}\n}'''\ny",
      "x = Rf\"{'''\n'''}\\{a}\"\ny",
      "x = f\"\\N{DIGIT ONE}{'''\n'''}\"\ny",
      "x = f'{a['b']:{'''\n'''}>{c}}'\ny",
      "x = f'{(lambda: {'a': '''\n'''})()!r:}}}'\ny",
      "x = f'{a # '''\n}'\ny",
  };
  for (const std::string& code : codes) {
    std::string text = "def f():\n";
    append_function_body(text, code);
    text += "g( f() )\n";
    const auto size = [](const std::string& of) { return static_cast<Py_ssize_t>(of.size()); };
    const PyObjectPtr same(
        PyObject_CallFunction(compare.get(), "s#s#", code.data(), size(code), text.data(), size(text)));
    EXPECT_EQ(same.get(), Py_True) << text;
  }
}

}  // namespace
}  // namespace ling::cpython
