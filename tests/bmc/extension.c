/* An extension of ipmi_sim, which does not answer Get Self Test Results (IPMI 2.0, 20.4) itself, and which
 * never fails. Its option names a file of faults, one a line; numbers as in C, the first word tells which:
 *     selftest RESULT DETAIL             the self test's result, unless 0x55 0x00: "passed"
 *     fail     NETFN COMMAND CODE AFTER  such a request gets this completion code, once AFTER have been answered
 *     delay    NETFN COMMAND MS AFTER    such a request is answered so many milliseconds later, likewise
 * The simulator provides the symbols. It has one thread: while one answer waits, all do. */
#include <OpenIPMI/mcserv.h>
#include <OpenIPMI/msg.h>
#include <OpenIPMI/serv.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

extern cmd_handler_f sensor_event_netfn_handlers[256];
extern cmd_handler_f app_netfn_handlers[256];
extern cmd_handler_f storage_netfn_handlers[256];

static struct {
    unsigned char netfn;
    cmd_handler_f *handlers;
    cmd_handler_f own[256];
} functions[] = {
    {0x04, sensor_event_netfn_handlers, {0}}, {0x06, app_netfn_handlers, {0}}, {0x0a, storage_netfn_handlers, {0}}};

static struct {
    char kind[16];
    unsigned int netfn, command, value, after, answered;
} faults[16];
static unsigned int fault_count;

static unsigned char result = 0x55; /* no error */
static unsigned char detail;

static void self_test(lmc_data_t *mc, msg_t *message, unsigned char *answer, unsigned int *size, void *data)
{
    (void)mc;
    (void)message;
    (void)data;
    answer[0] = 0; /* completion code */
    answer[1] = result;
    answer[2] = detail;
    *size = 3;
}

static void with_faults(lmc_data_t *mc, msg_t *message, unsigned char *answer, unsigned int *size, void *data)
{
    for (unsigned int i = 0; i < fault_count; ++i) {
        if (faults[i].netfn != message->netfn || faults[i].command != message->cmd) continue;
        if (faults[i].answered++ < faults[i].after) continue;
        if (strcmp(faults[i].kind, "fail") == 0) {
            answer[0] = (unsigned char)faults[i].value;
            *size = 1;
            return;
        }
        struct timespec wait = {faults[i].value / 1000, (long)(faults[i].value % 1000) * 1000000};
        while (nanosleep(&wait, &wait) != 0) {}
    }
    for (unsigned int i = 0; i < sizeof functions / sizeof *functions; ++i) {
        if (functions[i].netfn == message->netfn) functions[i].own[message->cmd](mc, message, answer, size, data);
    }
}

static int read_faults(const char *name)
{
    FILE *file = fopen(name, "r");
    if (!file) return -1;
    char line[256];
    int status = 0;
    while (fgets(line, sizeof line, file)) {
        unsigned int a, b;
        if (sscanf(line, " selftest %i %i", (int *)&a, (int *)&b) == 2) {
            result = (unsigned char)a;
            detail = (unsigned char)b;
        } else if (fault_count == sizeof faults / sizeof *faults ||
                   sscanf(line, " %15s %i %i %i %i", faults[fault_count].kind, (int *)&faults[fault_count].netfn,
                          (int *)&faults[fault_count].command, (int *)&faults[fault_count].value,
                          (int *)&faults[fault_count].after) != 5) {
            fprintf(stderr, "not a fault: %s", line);
            status = -1;
        } else {
            ++fault_count;
        }
    }
    fclose(file);
    return status;
}

int ipmi_sim_module_print_version(sys_data_t *sys, char *options)
{
    (void)sys;
    (void)options;
    return 0;
}

int ipmi_sim_module_init(sys_data_t *sys, const char *options)
{
    (void)sys;
    if (read_faults(options) != 0) return -1;
    app_netfn_handlers[0x04] = self_test;
    for (unsigned int i = 0; i < sizeof functions / sizeof *functions; ++i) {
        for (unsigned int command = 0; command < 256; ++command) {
            if (!functions[i].handlers[command]) continue;
            functions[i].own[command] = functions[i].handlers[command];
            functions[i].handlers[command] = with_faults;
        }
    }
    return 0;
}
