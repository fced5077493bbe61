# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: Apache-2.0
#
#   make run        build, and hold a conversation with the local assistant
#   make test       build, and run every test
#   make sanitize   the tests once more under the address, undefined-behaviour and thread sanitizers
#   make bench      measure, beside the bare libraries
#   make lint       formatting and static checks        make format   mend the formatting
#
# Each installs what it needs by name (scripts/setup) and is quiet where nothing is left to do.

.PHONY: run test sanitize bench lint format clean
.NOTPARALLEL:

run:
	@scripts/run

test:
	@scripts/test dev

sanitize:
	@scripts/test asan
	@scripts/test tsan

bench:
	@scripts/bench

lint:
	@scripts/lint

format:
	@scripts/setup lint
	@git ls-files '*.h' '*.cpp' | xargs clang-format-16 -i

clean:
	rm -rf build
