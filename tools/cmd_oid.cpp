// korutl oid parse|parent TEXT: the parts and canonical text of an object
// identifier, or of its parent.
#include <cstdio>
#include <string>

#include "korutl.h"
#include "tools/commands.h"
#include "tools/output.h"

namespace korutl_tool {

namespace {

bool oid_json = false;

void print_object_id(const KORVOObjectId *id) {
  if (oid_json) {
    JsonWriter w;
    w.begin_object().key("text").string(KORVOStrGetObjectIdString(id)).key("parts").begin_array();
    for (int32_t i = 0; i < KORVOStrGetNumberOfParts(id); ++i) w.string(KORVOStrGetPart(id, i));
    w.end_array().end_object().finish();
    return;
  }
  std::printf("text=%s\nparts=%d\n", KORVOStrGetObjectIdString(id), KORVOStrGetNumberOfParts(id));
  for (int32_t i = 0; i < KORVOStrGetNumberOfParts(id); ++i) {
    std::printf("part%d=%s\n", i, KORVOStrGetPart(id, i));
  }
}

void add_oid_command(CLI::App &app) {
  auto *oid = app.add_subcommand("oid", "Object identifiers");
  oid->require_subcommand(1);
  static std::string text;

  auto *parse = oid->add_subcommand("parse", "Print the parts and canonical text of TEXT");
  parse->add_option("TEXT", text, "Identifier text, such as \\localhost\\Halcyra\\2.2.1.3")
      ->required();
  parse->add_flag("--json", oid_json, "Print one JSON document (see the manual page)");
  parse->callback([] {
    KORVOObjectId *id = KORVOStrCreateObjectId(text.c_str(), nullptr);
    if (id == nullptr) {
      fail("not an object identifier: " + text);
      return;
    }
    print_object_id(id);
    KORVOStrDestroyObjectId(id);
  });

  auto *parent = oid->add_subcommand("parent", "Print the parent identifier of TEXT");
  parent->add_option("TEXT", text, "Identifier text")->required();
  parent->callback([] {
    KORVOObjectId *id = KORVOStrCreateObjectId(text.c_str(), nullptr);
    KORVOObjectId *up = KORVOGetParentObjectId(id);
    if (up == nullptr) {
      fail(text + " has no parent");
    } else {
      print_object_id(up);
    }
    KORVOStrDestroyObjectId(up);
    KORVOStrDestroyObjectId(id);
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("oid", add_oid_command);

}  // namespace korutl_tool
