// The smallest host: holds a value of the installed runtime.
#include "ling/any.h"

int main() {
  ling::Any value;
  return 0;
}
