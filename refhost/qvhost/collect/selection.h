// Which modules and tables are collected.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "qvhost/base/declared_tables.h"
#include "qvhost/base/options.h"
#include "qvhost/collect/offer.h"
#include "store/declared_table.h"

namespace qvhost {

// Puts names in place of what people call modules and tables: a module's name or display, a table's id or
// title, in any case. A title that several tables have means all of them. Throws Misuse for what is none
// of them, with the name that is nearest to it or all that there are, and if no module that was asked for has
// one of the tables.
void settle_names(CollectOptions& options, const Offer& offer,
                  const std::vector<DeclaredTable>& declared);

// Who asks for single modules or tables wants these.
bool asks_own_questions(const CollectOptions& options);

// Throws Misuse if a limit of its own was given to a tool that nothing names, and that is nearly the name of one.
// A plug-in may run tools that it does not declare, so that any other name is taken.
void expect_known_tools(const CollectOptions& options, const DeclaredTables& declared);

struct SelectedModule {
    std::size_t place;  // in the offer
    std::vector<std::string> tables;
    bool operator==(const SelectedModule&) const = default;
};

// Those that the user asked for by the names of the offer, in the order in which they are collected.
std::vector<SelectedModule> select_modules(const Offer& offer, const CollectOptions& options);

}  // namespace qvhost
