// Fixture for tests of the korutl command on a store of their own: the
// test is skipped where the command is not built.
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
