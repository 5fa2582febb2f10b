// The synchronised stack. Every operation holds the stack's spin lock from
// its first look at `top` to its return. Operations built on others
// (Append on an empty stack is a Push, InsertNth falls back to Push or
// Append) call the unlocked forms below instead of taking the lock a second
// time: the lock is not re-entrant.
#include <cstdlib>

#include "korutl.h"
#include "siblings/shm/shm.h"

namespace {

constexpr const char *kModule = "datastructures/stack";

// Holds the stack's lock for one scope; `line` is the caller's source line
// for the lock library's trace.
class StackLock {
 public:
  StackLock(KORVOStack *stack, int line)
      : stack_(stack),
        held_(stack != nullptr && shm_spin_lock(stack->lock, 0, kModule, line) == SHM_OK) {}
  ~StackLock() {
    if (held_) shm_spin_unlock(stack_->lock, kModule, __LINE__);
  }
  StackLock(const StackLock &) = delete;
  StackLock &operator=(const StackLock &) = delete;
  explicit operator bool() const { return held_; }

 private:
  KORVOStack *stack_;
  bool held_;
};

#define LOCK_OR_RETURN(stack, failure)     \
  StackLock lock_guard((stack), __LINE__); \
  if (!lock_guard) return (failure)

KORVOStackNode *new_node(intptr_t value, KORVOStackNode *next) {
  auto *node = static_cast<KORVOStackNode *>(std::malloc(sizeof(KORVOStackNode)));
  if (node != nullptr) {
    node->next = next;
    node->data = value;
  }
  return node;
}

int32_t push_locked(KORVOStack *stack, intptr_t value) {
  KORVOStackNode *node = new_node(value, stack->top);
  if (node == nullptr) return -1;
  stack->top = node;
  return 0;
}

int32_t append_locked(KORVOStack *stack, intptr_t value) {
  if (stack->top == nullptr) return push_locked(stack, value);
  KORVOStackNode *last = stack->top;
  while (last->next != nullptr) last = last->next;
  KORVOStackNode *node = new_node(value, nullptr);
  if (node == nullptr) return -1;
  last->next = node;
  return 0;
}

intptr_t unlink_after(KORVOStackNode **link) {
  KORVOStackNode *node = *link;
  *link = node->next;
  const intptr_t value = node->data;
  std::free(node);
  return value;
}

// The element `steps` links down from the top, or null when the list ends
// first.
KORVOStackNode *walk(KORVOStack *stack, int32_t steps) {
  KORVOStackNode *node = stack->top;
  while (node != nullptr && steps-- > 0) node = node->next;
  return node;
}

}  // namespace

extern "C" {

KORUTL_API int32_t KORVOStackInit(KORVOStack **handle) {
  if (handle == nullptr) return -2;
  if (*handle != nullptr) return 0;
  auto *stack = static_cast<KORVOStack *>(std::calloc(1, sizeof(KORVOStack)));
  if (stack == nullptr) return -1;
  if (shm_spin_alloc(&stack->lock, 0, -1, 0, kModule, __LINE__) != SHM_OK) {
    // Nothing half-made is left behind: the caller may simply try again.
    std::free(stack);
    return -2;
  }
  stack->top = nullptr;
  *handle = stack;
  return 0;
}

KORUTL_API int32_t KORVOStackFinite(KORVOStack **handle) {
  if (handle == nullptr || *handle == nullptr) return -2;
  if (shm_spin_free((*handle)->lock, kModule, __LINE__) != SHM_OK) return -2;
  std::free(*handle);
  return 0;
}

KORUTL_API int32_t KORVOStackPush(KORVOStack *stack, intptr_t value) {
  LOCK_OR_RETURN(stack, -2);
  return push_locked(stack, value);
}

KORUTL_API int32_t KORVOStackAppend(KORVOStack *stack, intptr_t value) {
  LOCK_OR_RETURN(stack, -2);
  return append_locked(stack, value);
}

KORUTL_API intptr_t KORVOStackPop(KORVOStack *stack) {
  LOCK_OR_RETURN(stack, 0);
  return stack->top == nullptr ? 0 : unlink_after(&stack->top);
}

KORUTL_API int32_t KORVOStackLength(KORVOStack *stack) {
  LOCK_OR_RETURN(stack, 0);
  int32_t n = 0;
  for (const KORVOStackNode *node = stack->top; node != nullptr; node = node->next) ++n;
  return n;
}

KORUTL_API intptr_t KORVOStackGetNth(KORVOStack *stack, int32_t position) {
  LOCK_OR_RETURN(stack, 0);
  if (position < 0) return 0;
  const KORVOStackNode *node = walk(stack, position);
  return node == nullptr ? 0 : node->data;
}

KORUTL_API int32_t KORVOStackInsertNth(KORVOStack *stack, int32_t position, intptr_t value) {
  LOCK_OR_RETURN(stack, -2);
  if (position <= 0) return push_locked(stack, value);
  KORVOStackNode *before = walk(stack, position - 1);
  if (before == nullptr) {
    // Past the end: the value is kept, at the end, and the caller is told
    // it is not where it asked.
    const int32_t appended = append_locked(stack, value);
    return appended == 0 ? -1 : appended;
  }
  KORVOStackNode *node = new_node(value, before->next);
  if (node == nullptr) return -1;
  before->next = node;
  return 0;
}

KORUTL_API intptr_t KORVOStackDeleteNth(KORVOStack *stack, int32_t position) {
  LOCK_OR_RETURN(stack, 0);
  if (position < 0 || stack->top == nullptr) return 0;
  if (position == 0) return unlink_after(&stack->top);
  KORVOStackNode *before = walk(stack, position - 1);
  if (before == nullptr || before->next == nullptr) return 0;
  return unlink_after(&before->next);
}

}  // extern "C"
