#include "simulator/page/engine.h"

#include <malloc.h>

#include <cstdlib>

namespace tavsim {
namespace {

// Small enough not to burden the machine.
constexpr duk_size_t kMemoryLimit = duk_size_t{256} * 1024 * 1024;

duk_size_t g_memoryInUse = 0;

void* reallocate(void*, void* block, duk_size_t size) {
    const duk_size_t before = malloc_usable_size(block);
    if (g_memoryInUse - before + size > kMemoryLimit) {
        return nullptr;
    }
    void* moved = std::realloc(block, size);
    if (moved != nullptr || size == 0) {
        g_memoryInUse += malloc_usable_size(moved) - before;
    }
    return moved;
}

void* allocate(void* data, duk_size_t size) {
    return reallocate(data, nullptr, size);
}

void release(void*, void* block) {
    g_memoryInUse -= malloc_usable_size(block);
    std::free(block);
}

}  // namespace

duk_context* createEngine(duk_fatal_function onFatalError) {
    return duk_create_heap(allocate, reallocate, release, nullptr, onFatalError);
}

void pushText(duk_context* engine, EngineText text) {
    if (text.bytes == nullptr) {
        duk_push_null(engine);
        return;
    }
    duk_push_lstring(engine, text.bytes, text.length);
}

EngineText textAt(duk_context* engine, duk_idx_t index) {
    EngineText text = {nullptr, 0};
    text.bytes = duk_get_lstring(engine, index, &text.length);
    return text;
}

duk_ret_t throwError(duk_context* engine, duk_errcode_t code, const char* message) {
    duk_push_error_object_raw(engine, code, nullptr, 0, "%s", message);
    return duk_throw(engine);
}

void pushHidden(duk_context* engine, const char* name) {
    duk_push_global_stash(engine);
    if (!duk_get_prop_string(engine, -1, name)) {
        duk_pop(engine);
        duk_push_bare_object(engine);
        duk_dup_top(engine);
        duk_put_prop_string(engine, -3, name);
    }
    duk_remove(engine, -2);
}

}  // namespace tavsim
