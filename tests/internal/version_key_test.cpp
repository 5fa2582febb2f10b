#include <gtest/gtest.h>

#include "readconfig/name_list.h"

namespace {

using korutl::cfg::VersionSortKey;

TEST(VersionSortKey, NumbersOfTheNameMakeTheKey) {
  struct Case {
    const char *name;
    uint32_t key;
  };
  for (const Case &c :
       {Case{"3", 300000000u}, Case{"2.10", 210000000u}, Case{"2.2.1", 202001000u},
        Case{"V2.3-beta", 203000000u}, Case{"2.2.1.3.9", 202001003u}, Case{"43", 5032704u},
        Case{"", 0u}, Case{"beta", 0u}, Case{"0.0.0.7", 7u}, Case{"1..2", 102000000u},
        // A run beyond 32 bits counts as 4294967295 before the arithmetic.
        Case{"0.0.0.99999999999", 4294967295u}, Case{"0.0.99999999999999999999999", 4294966296u}})
    EXPECT_EQ(VersionSortKey(c.name), c.key) << c.name;
  EXPECT_EQ(VersionSortKey(nullptr), 0u);
}

}  // namespace
