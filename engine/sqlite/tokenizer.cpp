#include "sqlite/tokenizer.h"

#include <sqlite3.h>

namespace imsdk::sqlite {

namespace {

// A tokenizer has no state, so the function itself goes through the index's hands as the instance.
struct Instance {
  Tokenizer tokenizer;
};

int Make(void* tokenizer, const char**, int, Fts5Tokenizer** made) {
  *made = reinterpret_cast<Fts5Tokenizer*>(tokenizer);
  return SQLITE_OK;
}

void Drop(Fts5Tokenizer*) {}

int Run(Fts5Tokenizer* made, void* index, int flags, const char* text, int length,
        int (*take)(void*, int, const char*, int, int, int)) {
  int result = SQLITE_OK;
  try {
    const std::string_view whole(length > 0 ? text : "", static_cast<std::size_t>(length));
    // Places inside the text are for highlighting, which no index here does.
    reinterpret_cast<Instance*>(made)->tokenizer(
        whole, (flags & FTS5_TOKENIZE_QUERY) != 0, [&](std::string_view token) {
          if (result != SQLITE_OK) return;
          result = take(index, 0, token.data(), static_cast<int>(token.size()), 0, 0);
        });
  } catch (...) {
    return SQLITE_NOMEM;
  }
  return result;
}

void Release(void* instance) { delete static_cast<Instance*>(instance); }

fts5_api* FullText(sqlite3* handle) {
  fts5_api* api = nullptr;
  sqlite3_stmt* query = nullptr;
  if (sqlite3_prepare_v2(handle, "SELECT fts5(?1)", -1, &query, nullptr) == SQLITE_OK) {
    sqlite3_bind_pointer(query, 1, &api, "fts5_api_ptr", nullptr);
    sqlite3_step(query);
  }
  sqlite3_finalize(query);
  return api;
}

}  // namespace

void RegisterTokenizer(Database& database, const char* name, Tokenizer tokenizer) {
  fts5_api* const api = FullText(database.handle());
  if (!api) throw Error("this SQLite has no full-text index");
  fts5_tokenizer functions{Make, Drop, Run};
  auto* instance = new Instance{tokenizer};
  if (api->xCreateTokenizer(api, name, instance, &functions, Release) != SQLITE_OK) {
    throw Error("the tokenizer could not be registered");
  }
}

}  // namespace imsdk::sqlite
