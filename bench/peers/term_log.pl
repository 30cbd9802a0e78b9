# perl term_log.pl fwtermlog.txt: counts lines, if the log is one.
use strict;
use warnings;

my ($records, $properties, $is_log, %record) = (0, 0, 0);
while (<>) {
    $is_log ||= /Firmware Term Log Information/;
    $record{FWTERMLOG} = $_;
    $records++;
    $properties += keys %record;
}
print "$records $properties\n" if $is_log;
