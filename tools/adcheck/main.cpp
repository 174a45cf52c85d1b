#include "tools/adcheck/Tool.h"

int main(int argc, char** argv) { return qorix::adcheck::runTool(argc, argv); }
