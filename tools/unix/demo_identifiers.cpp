// Demo step: an object identifier taken apart and written back.
#include <string>

#include "korutl.h"
#include "tools/unix/demo.h"

namespace korutl_tool::demo {

namespace {

void object_identifier(Context &c) {
  const char *text = "\\localhost\\Halcyra\\2.2.1\\3\\Agents\\Log%20Reader";
  KORVOObjectId *id = KORVOStrCreateObjectId(text, nullptr);
  c.report.call(std::string("KORVOStrCreateObjectId(") + quoted(text) + ", NULL)",
                id == nullptr ? "null" : std::to_string(KORVOStrGetNumberOfParts(id)) + " parts");
  if (!c.report.expect(id != nullptr, "the identifier parses")) return;
  c.report.call("KORVOStrGetHostFromObjectId", quoted(KORVOStrGetHostFromObjectId(id)));
  c.report.call("KORVOStrGetProductFromObjectId", quoted(KORVOStrGetProductFromObjectId(id)));
  c.report.call("KORVOStrGetVersionFromObjectId", quoted(KORVOStrGetVersionFromObjectId(id)));
  c.report.call("KORVOStrGetInstanceFromObjectId", quoted(KORVOStrGetInstanceFromObjectId(id)));
  c.report.call("KORVOStrGetPart(id, 5)", quoted(KORVOStrGetPart(id, 5)));
  c.report.call("KORVOStrGetObjectIdString", quoted(KORVOStrGetObjectIdString(id)));
  KORVOObjectId *parent = KORVOGetParentObjectId(id);
  c.report.call("KORVOGetParentObjectId",
                quoted(parent ? KORVOStrGetObjectIdString(parent) : nullptr));
  const auto is = [](const char *got, const char *want) {
    return got != nullptr && std::string(got) == want;
  };
  c.report.expect(
      KORVOStrGetNumberOfParts(id) == 6 && is(KORVOStrGetHostFromObjectId(id), "localhost") &&
          is(KORVOStrGetProductFromObjectId(id), "Halcyra") &&
          is(KORVOStrGetVersionFromObjectId(id), "2.2.1") &&
          is(KORVOStrGetInstanceFromObjectId(id), "3") &&
          is(KORVOStrGetPart(id, 5), "Log Reader") && is(KORVOStrGetObjectIdString(id), text) &&
          parent != nullptr &&
          is(KORVOStrGetObjectIdString(parent), "\\localhost\\Halcyra\\2.2.1\\3\\Agents"),
      "host, product, version 2.2.1, instance 3, \"Log Reader\" unescaped, the text back as given");
  KORVOStrDestroyObjectId(parent);
  KORVOStrDestroyObjectId(id);
}

}  // namespace

KORUTL_DEMO_STEP(100, "Parse and print an object identifier", object_identifier);

}  // namespace korutl_tool::demo
