// Web-server configuration discovery: the account, group, document root and
// CGI directory of the host's web server, read from the first httpd.conf that
// opens among a fixed list of eight places. What has been found is cached for
// the whole process, so a repeated request costs nothing.
//
// Where that line scan gives no usable answer (no file, a value missing, a
// name holding ${NAME}, a path that is not absolute), the configuration is
// read again as the server reads it (httpd_server_conf.h): the file the scan
// read, or else the first that opens of the main files of today's layouts
// (Debian, openSUSE/Alpine, source build, FreeBSD, Homebrew), each probe
// logged like the eight; each value so found is logged at information level
// with the <path>:<line> it came from. An unknown account named plainly
// fails as the scan says. When every way fails, the scan's messages stand.
#pragma once

#include <string>
#include <vector>

// Fills each non-null buffer (at least 1000 bytes; at most 999 characters
// written, always terminated) with its value: user, group, document root,
// script directory of the cgi-bin ScriptAlias. Returns 1 when every requested
// value is known (a request for nothing succeeds at once), 0 otherwise with a
// message in error_out when it is non-null:
//   "Cannot find httpd.conf file"
//   "User '%s' has bad uid '%d'" / "Group '%s' has bad uid '%d'"
//   "Could not find" followed by ", Group", ", User", ", DocumentRoot",
//   ", ScriptAlias" for each value still unknown, in that order.
// Values found before a failure stay cached.
int httpd_conf_lookup(char* user_out, char* group_out, char* docroot_out, char* scriptdir_out,
                      char* error_out);

// The main configuration file the operator named (-httpd-conf): only it is
// read, as the server reads it, and no place is probed. Null or "" restores
// the probing.
void httpd_conf_set_main(const char* path);

// Test seams. Replaces the more places probed after the eight (nullptr
// restores the fixed list).
void httpd_conf_set_more_places(const std::vector<std::string>* paths);
// Test seams. Replaces the probed paths (nullptr restores the fixed list of
// eight), and forgets everything cached.
void httpd_conf_set_candidates(const std::vector<std::string>* paths);
void httpd_conf_reset_cache();
