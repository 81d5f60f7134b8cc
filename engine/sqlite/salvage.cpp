#include "sqlite/salvage.h"

#include <sqlite3.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace imsdk::sqlite {

namespace {

// Places that cannot be read in one table, before the rest of it is given up.
constexpr int kMostGaps = 10'000;

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Query = std::unique_ptr<sqlite3_stmt, Finalize>;

Query Compile(sqlite3* handle, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr);
  return Query(statement);
}

std::string Quoted(const std::string& name) { return '"' + name + '"'; }

std::string TextAt(sqlite3_stmt* row, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  return text ? text : "";
}

struct Table {
  std::string name;
  std::vector<std::string> columns;
  std::string order;  // what its rows are in the order of
  bool rowid = true;
};

std::string List(const std::vector<std::string>& columns) {
  std::string list;
  for (const auto& column : columns) list += (list.empty() ? "" : ",") + Quoted(column);
  return list;
}

std::vector<Table> TablesOf(sqlite3* handle) {
  std::vector<Table> tables;
  const Query query =
      Compile(handle,
              "SELECT name, wr FROM pragma_table_list WHERE schema='main' AND "
              "type='table' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' AND name<>'store_identity' "
              "ORDER BY (SELECT rowid FROM sqlite_schema s WHERE s.name=pragma_table_list.name)");
  while (query && sqlite3_step(query.get()) == SQLITE_ROW) {
    Table table{TextAt(query.get(), 0), {}, {}, sqlite3_column_int(query.get(), 1) == 0};
    const Query columns = Compile(handle, "PRAGMA table_info(" + Quoted(table.name) + ")");
    std::vector<std::string> key;
    bool number = false;
    while (columns && sqlite3_step(columns.get()) == SQLITE_ROW) {
      table.columns.push_back(TextAt(columns.get(), 1));
      if (sqlite3_column_int(columns.get(), 5) == 0) continue;
      key.push_back(table.columns.back());
      number = TextAt(columns.get(), 2) == "INTEGER";
    }
    // A table whose key is not its row number has that besides.
    if (table.rowid && (key.size() != 1 || !number))
      table.columns.insert(table.columns.begin(), "rowid");
    table.order = table.rowid ? "rowid" : List(key);
    tables.push_back(std::move(table));
  }
  return tables;
}

// Copies one table.
class Copy {
 public:
  Copy(sqlite3* from, Database& to, const Table& table, Salvaged& salvaged)
      : from_(from), to_(to), table_(table), salvaged_(salvaged) {
    std::string marks;
    for (std::size_t i = 0; i < table.columns.size(); ++i) marks += i == 0 ? "?" : ",?";
    insert_ = Compile(to.handle(), "INSERT OR IGNORE INTO " + Quoted(table.name) + "(" +
                                       List(table.columns) + ") VALUES(" + marks + ")");
    if (!insert_) throw Error(sqlite3_errmsg(to.handle()));
  }

  void Run() {
    Row last = kFirst;
    if (Read("", kFirst, &last)) return;
    salvaged_.complete = false;
    Row first = kLast;
    // From the other end as well: between the two lies what cannot be read.
    Read(" DESC", kFirst, &first);
    if (!table_.rowid) return;
    Row gap = 1;
    for (int gaps = 0; last < first && gaps < kMostGaps; ++gaps) {
      if (first - last <= gap) return;
      const Row before = last += gap;
      if (Read("", last, &last)) return;
      gap = last > before ? 1 : gap * 2;
    }
  }

 private:
  using Row = std::int64_t;
  static constexpr Row kFirst = std::numeric_limits<Row>::min() / 4;
  static constexpr Row kLast = std::numeric_limits<Row>::max() / 4;

  // Copies from behind `after` on, or from the end. False at a place that cannot be read; `*at` is
  // the row before it.
  bool Read(const std::string& direction, Row after, Row* at) {
    const std::string rows = table_.rowid ? "rowid" : "0";
    const std::string from = table_.rowid ? " WHERE rowid>?1" : "";
    const Query query =
        Compile(from_, "SELECT " + rows + "," + List(table_.columns) + " FROM " +
                           Quoted(table_.name) + " NOT INDEXED" + from + " ORDER BY " +
                           (direction.empty() ? table_.order : Descending()));
    if (!query) return false;
    if (table_.rowid) sqlite3_bind_int64(query.get(), 1, after);
    int step = SQLITE_ROW;
    while ((step = sqlite3_step(query.get())) == SQLITE_ROW) {
      *at = sqlite3_column_int64(query.get(), 0);
      Insert(query.get());
    }
    return step == SQLITE_DONE;
  }

  std::string Descending() const {
    std::string order = table_.order;
    for (std::size_t at = order.find(','); at != std::string::npos; at = order.find(',', at + 6)) {
      order.insert(at, " DESC");
    }
    return order + " DESC";
  }

  void Insert(sqlite3_stmt* row) {
    for (int i = 0; i < static_cast<int>(table_.columns.size()); ++i) {
      sqlite3_bind_value(insert_.get(), i + 1, sqlite3_column_value(row, i + 1));
    }
    const int done = sqlite3_step(insert_.get());
    sqlite3_reset(insert_.get());
    if (done == SQLITE_DONE) {
      salvaged_.rows += sqlite3_changes64(to_.handle());
    } else if (done == SQLITE_FULL || done == SQLITE_IOERR) {
      throw Error(sqlite3_errmsg(to_.handle()));
    } else {
      salvaged_.complete = false;  // a row that cannot have been one
    }
  }

  sqlite3* const from_;
  Database& to_;
  const Table& table_;
  Salvaged& salvaged_;
  Query insert_;
};

}  // namespace

Salvaged Salvage(const std::filesystem::path& damaged, Database& to) {
  sqlite3* from = nullptr;
  const std::u8string name = damaged.u8string();
  sqlite3_open_v2(reinterpret_cast<const char*>(name.c_str()), &from, SQLITE_OPEN_READONLY,
                  nullptr);
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> close(from, sqlite3_close);
  // A broken entry of the schema must not hide the others.
  sqlite3_exec(from, "PRAGMA writable_schema=ON", nullptr, nullptr, nullptr);
  Salvaged salvaged;
  Transaction transaction(to);
  const std::vector<Table> tables = TablesOf(to.handle());
  for (const Table& table : tables) Copy(from, to, table, salvaged).Run();
  transaction.Commit();
  return salvaged;
}

}  // namespace imsdk::sqlite
