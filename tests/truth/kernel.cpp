// What the kernel says: dmesg, /proc/cpuinfo, /proc/cmdline, and lspci.
#include "print.h"

namespace truth {

namespace {

void print_dmesg(const Server& server, Random& random, Book& book, Pages& pages) {
    Page page{"dmesg.log", "dmesg", ""};
    double at = 0;
    int written = 1000;
    for (const auto& one : server.dmesg) {
        const auto seconds = number(at, 6);
        const int line = page.line("[" + right(seconds, 12) + "] " + one.text);
        at += random.between(1, 3000000) / 1e6;
        if (one.kind == KernelKind::quiet) continue;
        auto& event = book.events["kernel " + std::to_string(written++)];
        event.source = "kernel";
        event.words = one.words;
        event.spots = {{page.name, line, line}};
    }
    pages.push_back(page);
}

// Tells of processors where dmidecode does not.
void print_cpuinfo(const Server& server, Book& book, Pages& pages) {
    Page page{"cpuinfo.log", "cat", "/proc/cpuinfo"};
    int number = 0;
    int socket = 0;
    for (const auto& one : server.processors) {
        if (!one.is_there) continue;
        auto& subject = book.subject("processors", one.socket, {});
        for (int thread = 0; thread < one.threads; ++thread) {
            page.line("processor\t: " + std::to_string(number++));
            page.line("vendor_id\t: ExampleIntel");
            page.line("cpu family\t: 6");
            page.line("model\t\t: 63");
            const int model = page.line("model name\t: " + one.model);
            page.line("stepping\t: 2");
            page.line("cpu MHz\t\t: 2400.000");
            page.line("cache size\t: 20480 KB");
            const int id = page.line("physical id\t: " + std::to_string(socket));
            const int threads = page.line("siblings\t: " + std::to_string(one.threads));
            page.line("core id\t\t: " + std::to_string(thread % one.cores));
            const int cores = page.line("cpu cores\t: " + std::to_string(one.cores));
            page.line("fpu\t\t: yes");
            page.line("flags\t\t: fpu vme de pse tsc msr pae mce cx8 apic");
            page.line("bogomips\t: 4800.00");
            page.line("power management:");
            page.line("");
            if (thread > 0) continue;
            subject.tell(page, model, {{"model", one.model}});
            subject.tell(page, id, {{"socket", anything(nullptr)}, {"state", anything(nullptr)}});
            subject.tell(page, threads, {{"threads", one.threads}});
            subject.tell(page, cores, {{"cores", one.cores}});
        }
        ++socket;
    }
    pages.push_back(page);
}

std::string pci_name(const Server& server, const Controller& controller) {
    if (server.storage_tool == StorageTool::arcconf)
        return "RAID bus controller: Adaptec Series 7 6G SAS/PCIe 3 (rev 01)";
    if (server.storage_tool == StorageTool::sas2ircu)
        return "Serial Attached SCSI controller: LSI Logic / Symbios Logic SAS2308 PCI-Express "
               "Fusion-MPT SAS-2 (rev 05)";
    return controller.mode == Mode::raid
               ? "RAID bus controller: LSI Logic / Symbios Logic MegaRAID SAS-3 3108 [Invader] (rev 02)"
               : "Serial Attached SCSI controller: LSI Logic / Symbios Logic SAS3008 PCI-Express "
                 "Fusion-MPT SAS-3 (rev 02)";
}

void print_lspci(const Server& server, Pages& pages) {
    Page page{"host_lspci.txt", "lspci", ""};
    page.line("00:00.0 Host bridge: Example Silicon E5 v3 DMI2 (rev 02)");
    page.line("00:1f.0 ISA bridge: Example Silicon C610 LPC Controller (rev 05)");
    if (server.has_ahci)
        page.line(
            "00:1f.2 SATA controller: Example Silicon C610 6-Port SATA Controller [AHCI mode] (rev 05)");
    for (const auto& controller : server.controllers)
        page.line(controller.pci_address.substr(3, 2) + ":00.0 " + pci_name(server, controller));
    page.line(
        "e7:00.0 Ethernet controller: Example Networks I350 Gigabit Network Connection (rev 01)");
    page.line("eb:00.0 VGA compatible controller: Example Graphics G200eR2");
    pages.push_back(page);
}

}  // namespace

void print_kernel(const Server& server, Random& random, Book& book, Pages& pages) {
    print_dmesg(server, random, book, pages);
    print_cpuinfo(server, book, pages);
    Page line{"cmdline.log", "cat", "/proc/cmdline"};
    line.line("BOOT_IMAGE=/boot/vmlinuz-" + server.kernel +
              " root=UUID=00000220-1111-4222-8333-444444444444 quiet");
    pages.push_back(line);
    print_lspci(server, pages);
}

}  // namespace truth
