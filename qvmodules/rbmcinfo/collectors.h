// Captures of what the operating system knows, left as raw files in the log directory. Each function
// runs one command and returns its wait status.
#pragma once

#include "export.h"

namespace marlox::repository {

QV_EXPORT int mingling();    // the kernel's command line
QV_EXPORT int cpuinfo();     // the processors
QV_EXPORT int dmesg();       // the kernel's messages
QV_EXPORT int dmidecode();   // the firmware's tables
QV_EXPORT int interrupts();  // interrupt counts

// The distribution's support archive: sosreport where /etc/redhat-release exists, else nothing
// where /etc/NXBR-release exists, else SUSE's supportconfig. Returns the status of moving it to the
// log directory.
QV_EXPORT int sos();

// The firmware's settings, as the BIOS settings tool writes them into bios_settings.txt. Only on
// systems with one of the two release files; elsewhere returns a non-zero value. No module calls it.
QV_EXPORT int get_bios_settings();

}  // namespace marlox::repository
