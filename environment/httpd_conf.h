// Web-server configuration discovery: the account, group, document root and
// CGI directory of the host's web server, read from the first httpd.conf that
// opens among a fixed list of places. What has been found is cached for the
// whole process, so a repeated request costs nothing.
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
int httpd_conf_lookup(char* user_out, char* group_out, char* docroot_out,
                      char* scriptdir_out, char* error_out);

// Test seams. Replaces the probed paths (nullptr restores the fixed list of
// eight), and forgets everything cached.
void httpd_conf_set_candidates(const std::vector<std::string>* paths);
void httpd_conf_reset_cache();
