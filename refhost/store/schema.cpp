#include "store/schema.h"

namespace qvhost::store {

const char* const kSchema = R"sql(
-- Facts about the collection as a whole: started, finished, status, ...
CREATE TABLE qv_meta(key PRIMARY KEY, value) WITHOUT ROWID;

-- The machine in a few lines: product, BMC, kernel, ...; source is the capture that says so.
CREATE TABLE qv_fact(position INTEGER PRIMARY KEY, label, value, source);

-- The commands, in order. lane: those of one ran one after another. origin: 'plug-in' or 'host'.
-- started: UTC, NULL if it was not. seconds: NULL if it had not ended when the collection did.
-- stopped_by: 'time', 'silence', 'run', 'user', 'size' or NULL. captures: the files that it wrote,
-- joined by ', '. stderr: how its standard error begins. remark: what else is known of its end, in words.
CREATE TABLE qv_command(
    position INTEGER PRIMARY KEY, lane INTEGER, origin, command, tool, started, seconds REAL,
    exit INTEGER, signal INTEGER, stopped_by, captures, stderr, remark);

-- The modules, in the order in which the host met them.
CREATE TABLE qv_module(module INTEGER PRIMARY KEY, name UNIQUE, display);

-- The collected tables: the SQL table that holds the rows, the layout ('columns', 'rows' or NULL),
-- and why a table is empty or, with records, partial.
CREATE TABLE qv_table(
    tab INTEGER PRIMARY KEY, id UNIQUE, module INTEGER, sql_name,
    layout, width INTEGER, count INTEGER, flag INTEGER, reason);

-- The headers of a layout, in display order.
CREATE TABLE qv_header(tab INTEGER, position INTEGER, id, width INTEGER,
                       PRIMARY KEY(tab, position)) WITHOUT ROWID;

-- Which column of its table holds a property. Mostly the column has the property's own name.
CREATE TABLE qv_column(tab INTEGER, id, sql_name, PRIMARY KEY(tab, id)) WITHOUT ROWID;

-- What records have in common: which properties in which order, with which labels.
CREATE TABLE qv_shape(shape INTEGER, position INTEGER, id, display,
                      PRIMARY KEY(shape, position)) WITHOUT ROWID;

-- Records that follow one another and are alike but for their values. qv_seq counts all records of
-- the collection, in order, from 1.
CREATE TABLE qv_run(first_seq INTEGER PRIMARY KEY, last_seq INTEGER,
                    tab INTEGER, name, record_index INTEGER, shape INTEGER);

-- Values that have no column: SQLite allows 2000.
CREATE TABLE qv_extra(qv_seq INTEGER, position INTEGER, value,
                      PRIMARY KEY(qv_seq, position)) WITHOUT ROWID;
)sql";

}  // namespace qvhost::store
