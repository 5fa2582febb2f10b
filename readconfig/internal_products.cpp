// Internal products: the two code-page conversion handles between the
// local code set and the family's code set, kept in one record.
#include <cstdlib>

#include "korutl.h"
#include "siblings/cpx/cpx.h"

namespace {

int32_t *new_handle_cell() {
  auto *cell = static_cast<int32_t *>(std::malloc(sizeof(int32_t)));
  if (cell != nullptr) *cell = -1;
  return cell;
}

void close_and_free(int32_t *cell) {
  if (cell == nullptr) return;
  cpx_close_conversion(*cell);
  std::free(cell);
}

}  // namespace

extern "C" {

KORUTL_API int32_t KORVOInitInternalProducts(KORVOIntProdData **data) {
  if (data == nullptr) return 0;
  *data = nullptr;  // a failed start leaves null, even over an old record
  if (KORVOInitRegistry() == 0) return 0;
  KORVOIntProdData *record = KORVOCreateIntProdData();
  if (record == nullptr) return 0;  // the conversion library stays started
  record->readyFlag1 = 1;
  record->readyFlag2 = 1;
  *data = record;
  return 1;
}

KORUTL_API KORVOIntProdData *KORVOCreateIntProdData(void) {
  auto *record = static_cast<KORVOIntProdData *>(std::calloc(1, sizeof(KORVOIntProdData)));
  if (record == nullptr) return nullptr;
  record->cpxFromLocal = new_handle_cell();
  record->cpxToLocal = record->cpxFromLocal ? new_handle_cell() : nullptr;
  if (record->cpxToLocal == nullptr) {
    std::free(record->cpxFromLocal);
    std::free(record);
    return nullptr;
  }
  KORVOGetCpxHandles(record->cpxToLocal, record->cpxFromLocal);
  return record;
}

KORUTL_API void KORVODestroyIntProdData(KORVOIntProdData *record) {
  if (record == nullptr) return;
  close_and_free(record->cpxFromLocal);
  close_and_free(record->cpxToLocal);
  std::free(record);
}

KORUTL_API int32_t KORVOGetCpxHandles(int32_t *toLocal, int32_t *fromLocal) {
  if (toLocal) *toLocal = -1;
  if (fromLocal) *fromLocal = -1;
  const int32_t local = cpx_local_codeset();
  if (fromLocal && cpx_open_conversion(local, CPX_CODESET_FAMILY, fromLocal) != CPX_OK) {
    *fromLocal = -1;
  }
  if (toLocal && cpx_open_conversion(CPX_CODESET_FAMILY, local, toLocal) != CPX_OK) {
    *toLocal = -1;
  }
  return 1;
}

KORUTL_API int32_t KORVOCpxConversion(int32_t *handle, intptr_t a1, intptr_t a2, intptr_t a3,
                                      intptr_t a4, intptr_t a5, intptr_t a6) {
  if (handle == nullptr || *handle == -1) return 0;
  return cpx_convert_text(*handle, a1, a2, a3, a4, a5, 0, 0, 0, a6) == CPX_OK ? 1 : 0;
}

KORUTL_API void KORVOCleanupInternalProducts(KORVOIntProdData *record) {
  KORVODestroyIntProdData(record);
  cpx_term();
}

}  // extern "C"
