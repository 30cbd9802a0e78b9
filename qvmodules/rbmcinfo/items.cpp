#include "rbmcinfo/items.h"

namespace marlox::repository {

const char* const leditem[16] = {"LED1",  "LED2",  "LED3",  "LED4",  "LED5",  "LED6",
                                 "LED7",  "LED8",  "LED9",  "LED10", "LED11", "LED12",
                                 "LED13", "LED14", "LED15", "LED16"};

const char* const psuitem[26] = {"PSU1",  "PSU2",  "PSU3",  "PSU4",  "PSU5",  "PSU6",  "PSU7",
                                 "PSU8",  "PSU9",  "PSU10", "PSU11", "PSU12", "PSU13", "PSU14",
                                 "PSU15", "PSU16", "PSU17", "PSU18", "PSU19", "PSU20", "PSU21",
                                 "PSU22", "PSU23", "PSU24", "PSU25", "PSU26"};

const char* const fruitem[160] = {
    "FRU1",   "FRU2",   "FRU3",   "FRU4",   "FRU5",   "FRU6",   "FRU7",   "FRU8",   "FRU9",
    "FRU10",  "FRU11",  "FRU12",  "FRU13",  "FRU14",  "FRU15",  "FRU16",  "FRU17",  "FRU18",
    "FRU19",  "FRU20",  "FRU21",  "FRU22",  "FRU23",  "FRU24",  "FRU25",  "FRU26",  "FRU27",
    "FRU28",  "FRU29",  "FRU30",  "FRU31",  "FRU32",  "FRU33",  "FRU34",  "FRU35",  "FRU36",
    "FRU37",  "FRU38",  "FRU39",  "FRU40",  "FRU41",  "FRU42",  "FRU43",  "FRU44",  "FRU45",
    "FRU46",  "FRU47",  "FRU48",  "FRU49",  "FRU50",  "FRU51",  "FRU52",  "FRU53",  "FRU54",
    "FRU55",  "FRU56",  "FRU57",  "FRU58",  "FRU59",  "FRU60",  "FRU61",  "FRU62",  "FRU63",
    "FRU64",  "FRU65",  "FRU66",  "FRU67",  "FRU68",  "FRU69",  "FRU70",  "FRU71",  "FRU72",
    "FRU73",  "FRU74",  "FRU75",  "FRU76",  "FRU77",  "FRU78",  "FRU79",  "FRU80",  "FRU81",
    "FRU82",  "FRU83",  "FRU84",  "FRU85",  "FRU86",  "FRU87",  "FRU88",  "FRU89",  "FRU90",
    "FRU91",  "FRU92",  "FRU93",  "FRU94",  "FRU95",  "FRU96",  "FRU97",  "FRU98",  "FRU99",
    "FRU100", "FRU101", "FRU102", "FRU103", "FRU104", "FRU105", "FRU106", "FRU107", "FRU108",
    "FRU109", "FRU110", "FRU111", "FRU112", "FRU113", "FRU114", "FRU115", "FRU116", "FRU117",
    "FRU118", "FRU119", "FRU120", "FRU121", "FRU122", "FRU123", "FRU124", "FRU125", "FRU126",
    "FRU127", "FRU128", "FRU129", "FRU130", "FRU131", "FRU132", "FRU133", "FRU134", "FRU135",
    "FRU136", "FRU137", "FRU138", "FRU139", "FRU140", "FRU141", "FRU142", "FRU143", "FRU144",
    "FRU145", "FRU146", "FRU147", "FRU148", "FRU149", "FRU150", "FRU151", "FRU152", "FRU153",
    "FRU154", "FRU155", "FRU156", "FRU157", "FRU158", "FRU159", "FRU160"};

unsigned led_item_size = 0;
unsigned mc_item_size = 0;
unsigned self_item_size = 0;
unsigned ver_item_size = 0;
unsigned lan_item_size = 0;
unsigned psu_item_size = 0;
unsigned fru_item_size = 0;

}  // namespace marlox::repository
