// The readers of what the operating system and its tools tell of the machine. captures.h says which
// capture each of them reads.
#pragma once

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

void read_dmidecode(CaptureLines&, Reading&);   // dmidecode
void read_cpuinfo(CaptureLines&, Reading&);     // /proc/cpuinfo
void read_dmesg(CaptureLines&, Reading&);       // dmesg
void read_lspci(CaptureLines&, Reading&);       // lspci, also with -nn, -mm, -vmm
void read_cmdline(CaptureLines&, Reading&);     // /proc/cmdline
void read_os_release(CaptureLines&, Reading&);  // /etc/os-release
void read_uptime(CaptureLines&, Reading&);      // /proc/uptime, uptime
void read_hostname(CaptureLines&, Reading&);    // hostname, /etc/hostname
void read_machine_id(CaptureLines&, Reading&);  // /etc/machine-id
void read_kernel(CaptureLines&, Reading&);      // uname -r, /proc/version

}  // namespace qvhost::inventory
