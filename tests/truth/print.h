// The tools' forms of output: each prints what its tool says of a server, and notes what each line tells.
#pragma once

#include <vector>

#include "page.h"
#include "server.h"

namespace truth {

using Pages = std::vector<Page>;

void print_storcli(const Server& server, Random& random, Book& book, Pages& pages);
void print_arcconf(const Server& server, Random& random, Book& book, Pages& pages);
void print_sas2ircu(const Server& server, Random& random, Book& book, Pages& pages);
void print_ipmi(const Server& server, Random& random, Book& book, Pages& pages);
void print_dmidecode(const Server& server, Random& random, Book& book, Pages& pages);
void print_kernel(const Server& server, Random& random, Book& book, Pages& pages);

// How many controllers the plug-in asks: it reads their count as one digit.
int asked_controllers(const Server& server);

// Ids of entities in the book.
std::string volume_id(const Controller& controller, const Volume& volume);
std::string group_id(const Controller& controller, const Group& group);

}  // namespace truth
