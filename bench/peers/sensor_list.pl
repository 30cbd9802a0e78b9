# perl sensor_list.pl sensorinfo.txt: counts sensors and their properties.
use strict;
use warnings;

my @names = map { "item$_" } 1 .. 10;
my ($records, $properties) = (0, 0);
while (<>) {
    chomp;
    my %record;
    @record{@names} = split /\|/;
    $records++;
    $properties += keys %record;
}
print "$records $properties\n";
