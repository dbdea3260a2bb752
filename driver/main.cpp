#include "driver/run.hpp"

int main(int argc, char** argv) { runReachmap(argc, argv); }
