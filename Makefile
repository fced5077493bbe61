# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: Apache-2.0
#
#   make run          build, and start Velmora; without a display, hold a recorded conversation
#   make test         build, and run every test
#   make sanitize     the tests once more under the address, undefined-behaviour and thread sanitizers
#   make coverage     the tests with the lines counted; at least 85 in 100 of src/ must run
#   make fuzz         made-up input for what reads other people's, FUZZ_SECONDS (20) for each target
#   make soak         SOAK_TURNS (200) turns with one local assistant, and as many in the status bar with every
#                     accident in between; nothing may be left over
#   make lint         formatting and static checks          make format   mend the formatting
#   make bench        measure, beside the bare libraries
#   make docs         the pages of the headers, in build/docs/html
#   make package      the Debian package, checked           make try-package   in a fresh Debian, as root
#
# Each installs what it needs by name (scripts/setup) and is quiet where nothing is left to do.

.PHONY: run test sanitize coverage fuzz soak lint format bench docs package try-package clean
.NOTPARALLEL:

run:
	@scripts/run

test:
	@scripts/test dev

sanitize:
	@scripts/test asan
	@scripts/test tsan

coverage:
	@scripts/coverage

fuzz:
	@scripts/fuzz

soak:
	@scripts/soak

lint:
	@scripts/lint

format:
	@scripts/setup lint
	@git ls-files '*.h' '*.cpp' | xargs clang-format-16 -i

bench:
	@scripts/bench

docs:
	@scripts/docs

package:
	@scripts/package

try-package:
	@scripts/try-package

clean:
	rm -rf build
