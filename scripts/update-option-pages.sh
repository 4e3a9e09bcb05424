#!/bin/sh
# Rewrites the tables of docs/options.md and docs/k2k.1 from the option table. Takes the build folder.
set -e
K2K_UPDATE_DOCS=1 "${1:-build}/bin/test_driver" --gtest_brief=1 --gtest_filter='OptionPages.*'
