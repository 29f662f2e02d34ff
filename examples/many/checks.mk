# Checks each deck that has changed since it was last checked: make -f checks.mk -j4 DECKS="a/A.DATA b/B.DATA"
# A deck's files are its prerequisites, so that a changed include has the deck checked anew.
all: $(DECKS:.DATA=.checked)

%.checked: %.DATA
	@deckman check $< --json > $*.messages
	@deckman tree $< --json | tr '{' '\n' | sed -n 's|.*"file":"\([^"]*\)","exists":true.*|$@: $(dir $<)\1|p' > $*.files
	@touch $@
	@echo "$< is in order"

-include $(DECKS:.DATA=.files)
