// The sibling libraries when memory runs out: every operation gives its
// failure result or its full answer, and an import of the registry service
// either writes its whole file or leaves the store as it was.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>

#include "siblings/cpx/cpx.h"
#include "siblings/oss/oss.h"
#include "siblings/rsv/rsv.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/temp_store.h"

namespace {

using korutl_test::cfg_key;
using korutl_test::cfg_set;
using korutl_test::sweep_all;
using korutl_test::SweepCase;

constexpr const char *kKey = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Orrery";
constexpr const char *kImported = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Imported";

// Files the cases read and write: lambdas without captures name them.
std::string export_file, reg_file;

class RsvAllocationFailure : public korutl_test::TempStore {
 protected:
  void SetUp() override {
    TempStore::SetUp();
    cfg_key("Products\\Orrery\\Versions");
    cfg_set("Products\\Orrery", "Path", "/opt/orrery");
    export_file = file() + ".export.reg";
    std::ofstream reg(reg_file = file() + ".reg", std::ios::binary);
    reg << "Windows Registry Editor Version 5.00\r\n\r\n";
    for (int i = 0; i < 20; ++i)
      reg << "[" << kImported << "\\Key" << i << "]\r\n\"Name\"=\"value " << i << "\"\r\n\r\n";
  }
};

// The import, last, must hold all twenty keys of the file or none of them.
TEST_F(RsvAllocationFailure, OperationsAnswerOrFailCleanlyAndImportsAreWholeOrNothing) {
  const SweepCase cases[] = {
      {"rsv_get_value",
       [] {
         char text[64];
         uint16_t length = sizeof text;
         return rsv_get_value(kKey, "Path", text, &length, "t", 1) == RSV_OK &&
                std::strcmp(text, "/opt/orrery") == 0;
       }},
      {"rsv_set_value", [] { return rsv_set_value(kKey, "Mode", "lab", "t", 1) == RSV_OK; }},
      {"rsv_enum_subkeys",
       [] {
         char slot[256], *names[1] = {slot};
         uint16_t count = 1;
         return rsv_enum_subkeys(kKey, names, &count, "t", 1) == RSV_OK && count == 1 &&
                std::strcmp(slot, "Versions") == 0;
       }},
      {"rsv_enum_values",
       [] {
         char slots[2][33], *names[2] = {slots[0], slots[1]};
         uint16_t count = 2;
         return rsv_enum_values(kKey, names, &count, "t", 1) == RSV_OK && count >= 1;
       }},
      {"rsv_export_file",
       [] { return rsv_export_file(kKey, export_file.c_str(), "t", 1) == RSV_OK; }},
      {"cpx_open_conversion and cpx_convert_text",
       [] {
         int32_t handle = -1, written = 0;
         char utf8[16] = "";
         const bool right = cpx_init() == CPX_OK &&
                            cpx_open_conversion(1252, 65001, &handle) == CPX_OK &&
                            cpx_convert_text(handle, reinterpret_cast<intptr_t>("caf\xe9"), -1,
                                             reinterpret_cast<intptr_t>(utf8), sizeof utf8,
                                             reinterpret_cast<intptr_t>(&written), 0, 0, 0,
                                             CPX_TERMINATE) == CPX_OK &&
                            std::strcmp(utf8, "caf\xc3\xa9") == 0;
         cpx_close_conversion(handle);  // -1 when it never opened: ignored
         cpx_term();
         return right;
       }},
      {"oss_load_library, oss_get_function_address",
       [] {
         intptr_t handle = 0;
         void *entry = nullptr;
         if (oss_load_library(KORUTL_PROBE_DIR "/oss_probe.dll", &handle, "t", 1) != OSS_OK)
           return false;
         oss_get_function_address(handle, "get_resource", &entry, "t", 2);
         return oss_unload_library(handle, "t", 3) == OSS_OK && entry != nullptr;
       }},
      {"rsv_import_file",
       [] {
         uint16_t before = 0, after = 0;  // a missing key leaves 0
         rsv_query_key(kImported, &before, nullptr, "t", 1);
         const uint16_t rc = rsv_import_file(reg_file.c_str(), nullptr, "t", 1);
         // A failed import's failing call has come and gone: this count
         // fails nothing.
         rsv_query_key(kImported, &after, nullptr, "t", 1);
         EXPECT_TRUE(rc == RSV_OK || after == before) << "a failed import changed the store";
         return rc == RSV_OK && after == 20;
       }},
  };
  sweep_all(cases);
}

}  // namespace
