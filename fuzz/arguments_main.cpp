// The host's command line as a function, with the fuzzer's functions in place of those that act.
#define main qvhost_main
#define run_child asked_child
#define collect_here asked_collect
#define replay asked_replay
#define list_tables asked_tables
#define show_report asked_show

#include "../refhost/qvhost/main.cpp"  // NOLINT(bugprone-suspicious-include)
