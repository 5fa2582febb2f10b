// A temporary store for tests of the korutl command: skipped when the
// command is not built in this configuration.
#ifndef KORUTL_TESTS_SUPPORT_TOOL_STORE_H
#define KORUTL_TESTS_SUPPORT_TOOL_STORE_H

#include "tests/support/run_tool.h"
#include "tests/support/temp_store.h"

namespace korutl_test {

class ToolStore : public TempStore {
 protected:
  void SetUp() override {
#ifndef KORUTL_TOOL_FILE
    GTEST_SKIP() << "the korutl command is not built in this configuration";
#endif
    TempStore::SetUp();
  }
};

}  // namespace korutl_test

#endif
