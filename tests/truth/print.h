// The tools' forms of output: each prints what its tool says of a server, and notes what each line tells.
#pragma once

#include <string>
#include <vector>

#include "page.h"
#include "server.h"

namespace truth {

using Pages = std::vector<Page>;

void print_storcli(const Server& server, Random& random, Book& book, Pages& pages);
void print_arcconf(const Server& server, Random& random, Book& book, Pages& pages);
void print_sas2ircu(const Server& server, Random& random, Book& book, Pages& pages);
void print_ipmi(const Server& server, Random& random, Book& book, Pages& pages);
void print_md(const Server& server, Book& book, Pages& pages);
void print_zpool(const Server& server, Book& book, Pages& pages);
void print_dmidecode(const Server& server, Random& random, Book& book, Pages& pages);
void print_kernel(const Server& server, Random& random, Book& book, Pages& pages);

// How many controllers the plug-in asks: it reads their count as one digit.
int asked_controllers(const Server& server);

// Ids of entities in the book.
std::string volume_id(const Controller& controller, const Volume& volume);
std::string group_id(const Controller& controller, const Group& group);

std::string member_id(const Controller& controller, const Volume* volume, const Drive& drive);

// The volumes that a drive is one of; a null one alone if there is none.
std::vector<const Volume*> volumes_of(const Controller& controller, const Drive& drive);

// The line tells that the drive is one of a volume's, or of none.
void tell_member(const Page& page, int line, Book& book, const Controller& controller,
                 const Volume* volume, const Drive& drive, const std::vector<std::string>& match,
                 const std::vector<Saying>& says);

// The line tells something of the volume that is told of its members as well.
void tell_volume_of_members(const Page& page, int line, Book& book, const Controller& controller,
                            const Volume& volume, const std::vector<Saying>& says);

}  // namespace truth
