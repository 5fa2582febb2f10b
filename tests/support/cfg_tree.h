// Builds keys and values of the configuration tree in a test's store,
// with paths relative to HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel\Halcyra.
#ifndef KORUTL_TESTS_SUPPORT_CFG_TREE_H
#define KORUTL_TESTS_SUPPORT_CFG_TREE_H

#include <gtest/gtest.h>

#include <string>

#include "siblings/rsv/rsv.h"

namespace korutl_test {

inline const std::string cfg_root = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra";

// The full path of `relative` ("" for the root itself).
inline std::string cfg_path(const std::string &relative) {
  return relative.empty() ? cfg_root : cfg_root + "\\" + relative;
}

inline void cfg_key(const std::string &relative) {
  ASSERT_EQ(rsv_create_key(cfg_path(relative).c_str(), "test", __LINE__), RSV_OK) << relative;
}

inline void cfg_set(const std::string &relative, const std::string &name, const std::string &text) {
  cfg_key(relative);
  ASSERT_EQ(rsv_set_value(cfg_path(relative).c_str(), name.c_str(), text.c_str(), "test", __LINE__),
            RSV_OK);
}

}  // namespace korutl_test

#endif
