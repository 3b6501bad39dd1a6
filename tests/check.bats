#!/usr/bin/env bats
# install -check: a corpus of products with one planted mistake each, and
# the example product, which checks clean without running a thing. Each case
# (tests/data/check/<case>/) is the product in clean/ changed as the case
# says: <file>.sed edits that file (the planted mistake, by line), other
# files are laid over it, and the files its `absent` names are taken away;
# `expected` is the exact output.

load test_helper

setup() { make_product_dir; }
teardown() { remove_product_dir; }

# Empties the product directory but for the program.
clear_product_dir() { find . -mindepth 1 -maxdepth 1 ! -name install -exec rm -rf {} +; }

@test "each case of the corpus gets exactly its messages; the status is 1 when one is an error" {
  local case name want_status failed=()
  for case in "$BATS_TEST_DIRNAME"/data/check/*/; do
    name=$(basename "$case")
    clear_product_dir
    cp -r "$BATS_TEST_DIRNAME"/data/check/clean/. . && cp -r "$case". .
    [ ! -f absent ] || xargs rm -f < absent
    for edit in *.sed; do [ ! -f "$edit" ] || sed -i -f "$edit" "${edit%.sed}"; done
    rm -f expected absent ./*.sed
    talk "" -check
    want_status=0
    tail -n 1 "$case/expected" | grep -q '^0 errors' || want_status=1
    if ! diff -u "$case/expected" "$STDOUT_FILE" || [ "$status" -ne "$want_status" ] ||
      [ -s "$STDERR_FILE" ]; then
      echo "$name: status $status, expected $want_status"
      cat "$STDERR_FILE"
      failed+=("$name")
    fi
  done
  [ "${#failed[@]}" -eq 0 ] || { echo "failed: ${failed[*]}"; false; }
}

@test "the product the other tests start from (widget_product) checks clean" {
  widget_product
  talk "" -check
  ran_cleanly
  [ "$output" = "0 errors, 0 warnings" ]
}

@test "the example product checks clean; nothing runs and only the log changes; a renamed program checks its own files" {
  cp -r "$INSTALL_SOURCE_DIR"/examples/. .
  printf 'WFile $(current_dir)/written version - -\n' >> install.int
  local before
  before=$(find . -mindepth 1 -path ./install.log -prune -o -printf '%p %s %m %T@\n' | sort)
  talk "" -check
  ran_cleanly
  [ "$output" = "0 errors, 0 warnings" ]
  [ "$(find . -mindepth 1 -path ./install.log -prune -o -printf '%p %s %m %T@\n' | sort)" = "$before" ]
  [ -s install.log ]

  mv install setup
  for file in dat int q cpy; do mv install.$file setup.$file; done
  rm setup.q
  status=0
  # shellcheck disable=SC2086 # the runner is a command and its arguments
  $INSTALL_RUNNER ./setup -check > "$BATS_TEST_TMPDIR/setup.out" || status=$?
  [ "$status" -eq 1 ]
  [ "$(head -n 1 "$BATS_TEST_TMPDIR/setup.out" | cut -d: -f1)" = setup.q ]
  [ "$(tail -n 1 "$BATS_TEST_TMPDIR/setup.out")" = "1 errors, 0 warnings" ]
}
