// korutl msg, lang, msgfile and user over the sample tree and the sample
// language libraries.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/tool_store.h"

namespace {

using korutl_test::run_tool;

class LangTool : public korutl_test::ToolStore {
 protected:
  void SetUp() override {
    ToolStore::SetUp();
    if (IsSkipped()) return;
    setenv("KORVO_LANGUAGE_PATH", KORUTL_LANGUAGE_DIR, 1);
    ASSERT_EQ(run_tool("reg import '" KORUTL_SOURCE_DIR "/examples/halcyra-sample.reg'").status, 0);
  }
  void TearDown() override {
    unsetenv("KORVO_LANGUAGE_PATH");
    ToolStore::TearDown();
  }
};

TEST_F(LangTool, MessagesFromTheSampleTree) {
  struct Case {
    const char *args;
    int status;
    const char *out;
  };
  for (const Case &c : {
           Case{"msg HAL_SERVICE_STARTED HAL_DISK_LOW", 0,
                "(KOR0001) The Halcyra service has started.\n(KOR0180) Little free disk space is "
                "left.\n"},
           Case{"msg --lang German HAL_LANGUAGE", 0, "Deutsch\n"},
           // Orrery is strict: French of 2.2.1 is not searched from 2.10,
           // and the global language English serves instead.
           Case{"msg --oid '\\localhost\\Orrery\\2.10' --lang French ORR_SCAN_DONE", 0,
                "(ORR0020) The scan is complete.\n"},
           Case{"msg --oid '\\localhost\\Orrery\\2.2.1' --lang French ORR_SCAN_DONE", 0,
                "(ORR0020) L'analyse est terminée.\n"},
           Case{"msg --oid '\\localhost\\Nothing\\1' --lang French X", 0,
                "(KOR0301) Aucune bibliothèque de langue de ce produit n'est installée pour la "
                "langue "
                "demandée.\n"},
           Case{"msg NO_SUCH_KEY", 1, "korutl: no text for NO_SUCH_KEY\n"},
           Case{"msg", 2, nullptr},
       }) {
    const auto r = run_tool(c.args);
    EXPECT_EQ(r.status, c.status) << c.args << "\n" << r.out;
    if (c.out != nullptr) {
      EXPECT_EQ(r.out, c.out) << c.args;
    }
  }
}

TEST_F(LangTool, RegistrationsAndUsers) {
  EXPECT_EQ(run_tool("lang register Orrery 3 German orr_de.dll").status, 0);
  EXPECT_EQ(run_tool("lang list Orrery 3").out, "German=orr_de.dll\n");
  EXPECT_EQ(run_tool("msg --oid '\\h\\Orrery\\3' --lang German ORR_LANGUAGE").out, "Deutsch\n");
  EXPECT_EQ(run_tool("lang unregister Orrery 3").status, 0);
  EXPECT_EQ(run_tool("lang list Orrery 3").status, 1);
  EXPECT_EQ(run_tool("msgfile register Orrery 3 Core core.msg").status, 0);
  EXPECT_EQ(run_tool("msgfile unregister Orrery 3").status, 0);
  EXPECT_EQ(
      run_tool(
          "reg query "
          "'HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Orrery\\Versions\\3\\EventLayerMessages'")
          .status,
      1);

  EXPECT_EQ(run_tool("user check '\\localhost\\Orrery\\2.10' operator").out, "authorised\n");
  EXPECT_EQ(run_tool("user check '\\localhost\\Orrery\\2.10' guest").status, 1);
  EXPECT_EQ(run_tool("user restricted Orrery").status, 0);
  EXPECT_EQ(run_tool("user restricted Halcyra").out, "open\n");
}

}  // namespace
