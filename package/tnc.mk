# Rules for GNU make. A program of one page is made of it by its name; a program of several has a rule of its own with
# $(TNC_COMPILE) and its pages. The programs stand in TNC_PROGRAMS ahead of the include of this file: what they were made
# of is then known. TNCFLAGS are the options.
TNC_DEPS ?= tnc-deps
TNC_COMPILE = $(TNC_DEPS) --deps $@.d -o $@ $(TNCFLAGS)

%.tna: %.tn
	$(TNC_COMPILE) $<

-include $(TNC_PROGRAMS:=.d)
