/* An extension of ipmi_sim, which does not answer Get Self Test Results (IPMI 2.0, 20.4) itself: the
 * answer is "passed". The simulator provides the symbols. */
#include <OpenIPMI/mcserv.h>
#include <OpenIPMI/msg.h>
#include <OpenIPMI/serv.h>

extern cmd_handler_f app_netfn_handlers[256];

static void self_test(lmc_data_t *mc, msg_t *message, unsigned char *answer, unsigned int *size, void *data)
{
    (void)mc;
    (void)message;
    (void)data;
    answer[0] = 0;    /* completion code */
    answer[1] = 0x55; /* no error */
    answer[2] = 0;
    *size = 3;
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
    (void)options;
    app_netfn_handlers[0x04] = self_test;
    return 0;
}
