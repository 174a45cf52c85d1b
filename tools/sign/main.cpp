#include "tools/sign/Tool.h"

int main(int argc, char** argv) { return qorix::tools::sign::runTool(argc, argv); }
