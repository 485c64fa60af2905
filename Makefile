# The front door: each target sets up what it needs by itself.
.DEFAULT_GOAL := help
.NOTPARALLEL:
.ONESHELL:
.SUFFIXES:
SHELL := /bin/bash
.SHELLFLAGS := -Eeuo pipefail -c
MAKEFLAGS += --no-print-directory --no-builtin-rules

# What is tested, installed and packaged.
ARCHS := i386 x86_64
# Where `make install` puts it. DESTDIR stages it elsewhere.
PREFIX := /usr/local
DESTDIR :=
# A picture of your own for `make demo`, else the gallery paints one.
IMAGE :=
# Arguments for `make bench`.
BENCH :=
SETUP := tools/setup
JOBS := $(shell nproc)

.PHONY: help
help:  ## list the targets
	@awk -F ':.*## ' '/^[a-z]+:.*## / { printf "  make %-8s  %s\n", $$1, $$2 }' $(firstword $(MAKEFILE_LIST))

setup-%:
	@$(SETUP) $*

configure-tsan: setup-tsan
configure-%:
	@cmake --preset $* --log-level=WARNING >/dev/null

build-%: configure-%
	@cmake --build --preset $* --parallel $(JOBS)

test-%: setup-test build-%
	@echo "== tests, $*"
	@ctest --preset $* --output-log build/$*/tests.log

.PHONY: demo
demo: setup-demo configure-release-i386  ## run every family on a picture (IMAGE=photo.jpg) and print the page's path
	@cmake --build --preset release-i386 --parallel $(JOBS) --target gallery
	@build/release-i386/bin/gallery $(if $(IMAGE),"$(IMAGE)") --output out/gallery

.PHONY: test
test: $(ARCHS:%=test-%)  ## build and test both architectures

.PHONY: bench
bench: setup-bench  ## measure every operation (BENCH="--quick --filter AbsDiff")
	@mkdir -p out/bench
	@for arch in $(ARCHS); do
	    cmake --preset release-$$arch -DQELCV_BUILD_BENCH=ON --log-level=WARNING >/dev/null
	    cmake --build --preset release-$$arch --parallel $(JOBS) --target qelcv_bench
	    echo "== benchmarks, $$arch"
	    build/release-$$arch/bin/qelcv_bench --json out/bench/$$arch.json $(BENCH)
	done

.PHONY: docs
docs: setup-docs configure-release-x86_64  ## make the API reference
	@cmake --build --preset release-x86_64 --target docs

.PHONY: lint
lint: setup-lint setup-test configure-x86_64  ## check format, sources and scripts
	@tools/lint

.PHONY: format
format: setup-lint  ## lay out all sources
	@git ls-files -z '*.h' '*.c' '*.cpp' | xargs -0 clang-format -i

.PHONY: install
install: setup-build $(ARCHS:%=build-release-%)  ## install (PREFIX=/usr/local DESTDIR= ARCHS="i386 x86_64")
	@for arch in $(ARCHS); do DESTDIR="$(DESTDIR)" cmake --install build/release-$$arch --prefix "$(PREFIX)"; done

.PHONY: package
package: setup-package $(ARCHS:%=build-release-%)  ## make Debian packages in out/packages
	@for arch in $(ARCHS); do cpack --config build/release-$$arch/CPackConfig.cmake -B out/packages; done
	rm -rf out/packages/_CPack_Packages
	ls out/packages/*.deb

.PHONY: clean
clean:  ## remove all that was built
	rm -rf build out
