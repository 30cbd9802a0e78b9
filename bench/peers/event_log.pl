# perl event_log.pl raidevents.txt: counts events and their properties.
use strict;
use warnings;

my ($records, $properties, $started, $data, %record) = (0, 0, 0, "");
sub finish { $record{EventData} = $data; $records++; $properties += keys %record }

while (<>) {
    if (/(seqNum|Seconds since last reboot|Time|Code|Class|Locale|Event Description): ?(.*)/s) {
        if ($1 eq "seqNum") {
            finish() if $started;
            $started = 1;
        }
        $record{$1 eq "Seconds since last reboot" ? "Time" : $1} = $2;
    } elsif (/Event Data:/) {
    } elsif (/=======/) {
        $data = "";
    } elsif ($started && /Controller =/) {
        finish();
    } else {
        $data .= $_;
    }
}
print "$records $properties\n";
