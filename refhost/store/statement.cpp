#include "store/statement.h"

namespace qvhost::store {

void bind_row(SQLite::Statement& statement, const std::vector<TypedValue>& row) {
    statement.reset();
    int place = 0;
    for (const auto& value : row) {
        ++place;
        if (const auto* integer = std::get_if<std::int64_t>(&value)) {
            statement.bind(place, *integer);
        } else if (const auto* real = std::get_if<double>(&value)) {
            statement.bind(place, *real);
        } else if (const auto* text = std::get_if<std::string>(&value)) {
            statement.bindNoCopy(place, *text);
        } else {
            statement.bind(place);
        }
    }
}

void take_row(SQLite::Statement& statement, std::vector<TypedValue>& row) {
    row.assign(static_cast<std::size_t>(statement.getColumnCount()), {});
    for (std::size_t i = 0; i < row.size(); ++i) {
        const auto cell = statement.getColumn(static_cast<int>(i));
        if (cell.isInteger()) {
            row[i] = cell.getInt64();
        } else if (cell.isFloat()) {
            row[i] = cell.getDouble();
        } else if (!cell.isNull()) {
            row[i] = cell.getString();
        }
    }
}

}  // namespace qvhost::store
