#include "tools/adcheck/Tool.h"

int main(int argc, char** argv) { return qorix::tools::adcheck::runTool(argc, argv); }
