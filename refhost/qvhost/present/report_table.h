// The tables of a report by the names that people give them: those that the plug-in files, and those of the host's own
// reading, such as drives, events and findings.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "rows/row_printer.h"
#include "store/store.h"

namespace qvhost {

class ReportTable {
public:
    enum class Kind { filed, read };  // filed by the plug-in, read by the host

    ReportTable(Kind kind, std::string id) : kind_(kind), id_(std::move(id)) {}

    Kind kind() const { return kind_; }
    const std::string& id() const { return id_; }
    std::int64_t rows(const Store& store) const;

    // As SQL names them.
    std::vector<std::string> columns(const Store& store) const;

    // Each row in its order, a cell for each column.
    void each_row(const Store& store,
                  const std::function<void(const std::vector<Cell>&)>& take) const;

private:
    Kind kind_;
    std::string id_;
};

// All tables: those that the host read first.
std::vector<ReportTable> tables_of(const Store& store);

// A table of the plug-in's and its module; null pointers: there is none of this id.
struct FiledTable {
    const ModuleInfo* module = nullptr;
    const TableInfo* table = nullptr;
};
FiledTable find_filed(const std::vector<ModuleInfo>& modules, const std::string& id);

// What a name stands for: an id, in capitals or not; of the host's own tables in the singular as well. "volume"
// may stand for two: volumes and VOLUME. Throws std::runtime_error with the nearest name if there is none.
std::vector<ReportTable> tables_named(const Store& store, const std::string& name,
                                      const std::string& report);

// Writes the rows of tables as a program reads them: csv (one table alone), json or jsonl. In JSON each row begins
// with its table's name, as "qv_table".
void write_rows(std::ostream& out, const Store& store, const std::vector<ReportTable>& tables,
                const RowStyle& style);

}  // namespace qvhost
