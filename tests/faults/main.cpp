#include "faults/run.h"

int main(int count, char** arguments) { return faults::run_scenarios(count, arguments); }
