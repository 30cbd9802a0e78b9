# perl drive_list.pl pdlist.txt: counts drives and their properties.
use strict;
use warnings;

my %wanted = map { $_ => 1 } (
    "Shield Counter", "Media Error Count", "Other Error Count", "Drive Temperature",
    "Predictive Failure Count", "S.M.A.R.T alert flagged by drive", "SN", "WWN",
    "Firmware Revision", "Raw size", "Non Coerced size", "Coerced size", "Device Speed",
    "Link Speed", "Logical Sector Size", "Enclosure position", "Connected Port Number",
    "Commissioned Spare", "Emergency Spare", "Needs EKM Attention");
my ($records, $properties, %record) = (0, 0);
while (<>) {
    my ($key, $value) = split / =/, $_, 2;
    next unless defined $value && $wanted{$key};
    $record{$key} = $value;
    next unless $key eq "Needs EKM Attention";
    $records++;
    $properties += keys %record;
}
print "$records $properties\n";
