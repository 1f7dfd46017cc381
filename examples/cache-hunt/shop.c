#include <stdio.h>

#include "hunt.h"
#include "picture.h"

#define ITEM "hint"

/* The price is in an object within the answer. */
static void read_price(const char *answer, char *price, int size)
{
    char item[512] = "";
    const TAV_ServiceParameters outer = {answer, 0, 0};
    const TAV_ServiceParameters inner = {item, 0, 0};

    TAV_GetParamString(&outer, "item", item, sizeof item);
    TAV_GetParamString(&inner, "price", price, size);
}

static void offer(void)
{
    TAV_ItemInfo *info = TAV_GetItemInfo(ITEM);
    char price[8] = "", message[40];

    if (info == NULL) {
        say("No hints are sold today", 1);
        return;
    }
    read_price(TAV_GetItemJSON(info), price, sizeof price);
    TAV_FreeItemInfo(info);
    snprintf(message, sizeof message, "A hint is %s; H buys it", price);
    say(message, 0);
    hunt.is_offered = 1;
}

/* A purchase may take any time, so the player is told before. */
static void buy(void)
{
    TAV_ItemReceipt *receipt;

    say("Buying a hint...", 0);
    draw();
    receipt = TAV_PurchaseItem(ITEM, 1, NULL);
    hunt.is_offered = 0;
    hunt.has_hint = receipt != NULL;
    if (hunt.has_hint) {
        TAV_FreeItemReceipt(receipt);
        say("Follow the arrow", 0);
    } else {
        say("The hint was not sold", 1);
        printf("not sold: %s\n", TAV_GetError());
    }
}

void want_hint(void)
{
    if (hunt.found == CACHE_COUNT || hunt.has_hint) {
        return;
    }
    if (hunt.is_offered) {
        buy();
    } else {
        offer();
    }
}
