#include "driver/installer.h"

int main(int argc, char** argv) { return run_installer(argc, argv); }
