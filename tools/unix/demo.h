// `korutl demo`: the library at work, one step after the other. Each step
// lives in a demo_*.cpp of its own and registers itself with
// KORUTL_DEMO_STEP; the command runs them in order of their numbers.
#ifndef KORUTL_TOOLS_DEMO_H
#define KORUTL_TOOLS_DEMO_H

#include <cstdio>
#include <string>

namespace korutl_tool::demo {

// What a step prints and how it ends. A step prints each call it makes and
// what came back, and checks the answers it expects; the first failed
// check ends the step as failed.
class Report {
 public:
  explicit Report(bool quiet) : quiet_(quiet) {}

  // "    CALL -> RESULT"
  void call(const std::string &call, const std::string &result);
  // A line of the step's own, indented like the calls.
  void line(const std::string &text);
  // false (and the step is marked failed) when `ok` is false.
  bool expect(bool ok, const std::string &what);
  // The step cannot run in this build or on this machine; not a failure.
  void unavailable(const std::string &why);

  void begin(int number, const char *title);
  void end();
  // The one-line summary; the exit status (0 only when no step failed).
  int finish(const std::string &store);

  bool quiet() const { return quiet_; }
  std::FILE *out() const { return quiet_ ? nullptr : stdout; }

 private:
  bool quiet_;
  bool failed_ = false;
  bool unavailable_ = false;
  int steps_ = 0, passed_ = 0, failures_ = 0, skipped_ = 0;
  std::string first_failure_;
};

// What the steps share: the sample tree and the folder of the sample
// language libraries ("" when none was found).
struct Context {
  Report &report;
  std::string sample;
  std::string language_dir;
};

using StepFunction = void (*)(Context &);

bool register_step(int order, const char *title, StepFunction fn);

// Runs every step in order.
void run_steps(Context &context);

// Text shown for a C string result: "null" or the text in double quotes.
std::string quoted(const char *text);

}  // namespace korutl_tool::demo

#define KORUTL_DEMO_STEP(order, title, fn)                   \
  [[maybe_unused]] static const bool korutl_demo_step_##fn = \
      ::korutl_tool::demo::register_step(order, title, fn)

#endif
