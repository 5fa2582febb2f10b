#include <map>
#include <utility>

#include "tools/unix/demo.h"

namespace korutl_tool::demo {

namespace {

struct Step {
  const char *title;
  StepFunction fn;
};

std::multimap<int, Step> &steps() {
  static std::multimap<int, Step> all;
  return all;
}

}  // namespace

bool register_step(int order, const char *title, StepFunction fn) {
  steps().emplace(order, Step{title, fn});
  return true;
}

void run_steps(Context &context) {
  int number = 0;
  for (const auto &[order, step] : steps()) {
    context.report.begin(++number, step.title);
    step.fn(context);
    context.report.end();
  }
}

// Built by appending: GCC 12 at -O3 warns falsely (-Wrestrict) on
// "literal" + std::string here.
std::string quoted(const char *text) {
  if (text == nullptr) return "null";
  std::string out(1, '"');
  out.append(text).push_back('"');
  return out;
}

void Report::call(const std::string &call, const std::string &result) {
  if (!quiet_) std::printf("    %s -> %s\n", call.c_str(), result.c_str());
}

void Report::line(const std::string &text) {
  if (!quiet_) std::printf("    %s\n", text.c_str());
}

bool Report::expect(bool ok, const std::string &what) {
  if (!ok && !failed_) {
    failed_ = true;
    if (!quiet_) std::printf("    FAILED: %s\n", what.c_str());
    if (first_failure_.empty()) first_failure_ = what;
  }
  return ok;
}

void Report::unavailable(const std::string &why) {
  unavailable_ = true;
  if (!quiet_) std::printf("    not available in this build: %s\n", why.c_str());
}

void Report::begin(int number, const char *title) {
  failed_ = false;
  unavailable_ = false;
  ++steps_;
  if (!quiet_) std::printf("\n[%d] %s\n", number, title);
}

void Report::end() {
  if (failed_)
    ++failures_;
  else if (unavailable_)
    ++skipped_;
  else
    ++passed_;
}

int Report::finish(const std::string &store) {
  if (!quiet_) std::printf("\n");
  std::printf(
      "korutl demo: %d steps, %d as expected, %d failed, %d not available in this build "
      "(store %s)%s%s\n",
      steps_, passed_, failures_, skipped_, store.c_str(),
      first_failure_.empty() ? "" : "; first failure: ", first_failure_.c_str());
  return failures_ == 0 ? 0 : 1;
}

}  // namespace korutl_tool::demo
