#!/usr/bin/perl
# Writes a product tree for the install benchmark.
#
#   make_tree.pl small DIR COUNT   COUNT files of 1-16 KiB, 20 to a directory,
#                                  10 such directories to a parent: DIR/dNNN/dNN/fNN.dat
#   make_tree.pl large DIR COUNT   COUNT files of 8 MiB directly in DIR
#
# The sizes come from a fixed seed, so every run of the benchmark copies the
# same bytes.
use strict;
use warnings;

my ($kind, $dir, $count) = @ARGV;
die "usage: $0 small|large DIR COUNT\n" unless defined $count && $count =~ /^\d+$/;

srand(20240);
# One block of noise to cut every file from; an offset varies the content.
my $noise = join '', map { chr(int(rand(256))) } 1 .. 65536;

sub write_file {
  my ($path, $size, $offset) = @_;
  open(my $out, '>:raw', $path) or die "$path: $!\n";
  my $left = $size;
  while ($left > 0) {
    my $take = $left < 32768 ? $left : 32768;
    print {$out} substr($noise, $offset % 32768, $take);
    $left -= $take;
    $offset += 7;
  }
  close($out) or die "$path: $!\n";
}

mkdir $dir or die "$dir: $!\n";
if ($kind eq 'large') {
  write_file(sprintf('%s/part%03d.bin', $dir, $_), 8 * 1024 * 1024, $_ * 131) for 0 .. $count - 1;
  exit 0;
}
die "unknown kind '$kind'\n" unless $kind eq 'small';
my $per_dir = 20;
my $per_parent = 10;
for my $n (0 .. $count - 1) {
  my $leaf = int($n / $per_dir);
  my $parent = sprintf('%s/d%03d', $dir, int($leaf / $per_parent));
  my $leaf_dir = sprintf('%s/d%02d', $parent, $leaf % $per_parent);
  if ($n % ($per_dir * $per_parent) == 0) { mkdir $parent or die "$parent: $!\n"; }
  if ($n % $per_dir == 0) { mkdir $leaf_dir or die "$leaf_dir: $!\n"; }
  my $size = 1024 + int(rand(15 * 1024 + 1));
  write_file(sprintf('%s/f%02d.dat', $leaf_dir, $n % $per_dir), $size, $n);
}
