// SPDX-License-Identifier: GPL-2.0
/*
 * The RT2860 access point driver's configuration interface, simulated:
 * network devices vap0-vap3 and wds0-wds3 with fixed MAC addresses, the
 * private wireless-extensions command "set" (one string of up to 1024
 * bytes, as "iwpriv <if> set Key=Value" sends it), open and stop.
 *
 * /proc/rt2860sim/log    every request, open and stop in order, one a line:
 *                        "set <if> <command> <length> <flags> <result>
 *                        <bytes>" (command and flags as 0x%04x: every
 *                        field of the request as it arrived) and
 *                        "open|stop <if> <result>"; writing to it clears it
 * /proc/rt2860sim/state  each interface's current value per key
 * /proc/rt2860sim/fail   a pattern: a request ("<if> set <text>") or an open
 *                        ("<if> up") holding it fails with EIO; empty: none
 *
 * Bytes below 0x20 or above 0x7e and the backslash are shown as \ooo, so
 * the lines give back the bytes exactly.
 */
#include <linux/err.h>
#include <linux/etherdevice.h>
#include <linux/module.h>
#include <linux/netdevice.h>
#include <linux/proc_fs.h>
#include <linux/seq_file.h>
#include <linux/slab.h>
#include <linux/string.h>
#include <linux/wireless.h>
#include <net/iw_handler.h>

#define SET_MAX 1024
#define LOG_MAX (4 << 20) /* bytes kept; later records are counted only */

struct record {
	struct list_head list;
	char kind[5];
	char ifname[IFNAMSIZ];
	int result;
	unsigned int cmd;
	u16 len, flags;
	char data[];
};

struct setting {
	struct list_head list;
	u16 keylen, len;
	char *value; /* points into text, after the key and '=' */
	char text[];
};

struct sim {
	struct list_head settings;
};

static DEFINE_MUTEX(lock);
static LIST_HEAD(records);
static size_t logged, lost;
static char fail[SET_MAX + 1];
static struct net_device *devs[8];
static struct proc_dir_entry *dir;

static bool failing(const char *ifname, const char *verb, const char *text, size_t n)
{
	char *line;
	bool hit;

	if (!fail[0])
		return false;
	line = kasprintf(GFP_KERNEL, "%s %s %.*s", ifname, verb, (int)n, text);
	hit = !line || strstr(line, fail);
	kfree(line);
	return hit;
}

static void note(const char *kind, struct net_device *dev, int result,
		 const struct iw_request_info *info, const struct iw_point *req,
		 const char *data, u16 len)
{
	struct record *r;

	if (logged + sizeof(*r) + len > LOG_MAX ||
	    !(r = kmalloc(sizeof(*r) + len, GFP_KERNEL))) {
		lost++;
		return;
	}
	strscpy(r->kind, kind, sizeof(r->kind));
	strscpy(r->ifname, dev->name, sizeof(r->ifname));
	r->result = result;
	r->cmd = info ? info->cmd : 0;
	r->flags = req ? req->flags : 0;
	r->len = len;
	memcpy(r->data, data, len);
	list_add_tail(&r->list, &records);
	logged += sizeof(*r) + len;
}

/* One key's value, replacing the one before. */
static int store(struct sim *sim, const char *text, size_t n)
{
	const char *eq = memchr(text, '=', n);
	struct setting *s, *old;

	if (!eq)
		return 0;
	s = kmalloc(sizeof(*s) + n, GFP_KERNEL);
	if (!s)
		return -ENOMEM;
	memcpy(s->text, text, n);
	s->keylen = eq - text;
	s->value = s->text + s->keylen + 1;
	s->len = n - s->keylen - 1;
	list_for_each_entry(old, &sim->settings, list) {
		if (old->keylen == s->keylen && !memcmp(old->text, text, s->keylen)) {
			list_replace(&old->list, &s->list);
			kfree(old);
			return 0;
		}
	}
	list_add_tail(&s->list, &sim->settings);
	return 0;
}

static int sim_set(struct net_device *dev, struct iw_request_info *info,
		   union iwreq_data *wrqu, char *extra)
{
	u16 len = min_t(u16, wrqu->data.length, SET_MAX);
	size_t n = strnlen(extra, len);
	int result = 0;

	mutex_lock(&lock);
	if (failing(dev->name, "set", extra, n))
		result = -EIO;
	else
		result = store(netdev_priv(dev), extra, n);
	note("set", dev, result, info, &wrqu->data, extra, len);
	mutex_unlock(&lock);
	return result;
}

static int sim_open(struct net_device *dev)
{
	int result;

	mutex_lock(&lock);
	result = failing(dev->name, "up", "", 0) ? -EIO : 0;
	note("open", dev, result, NULL, NULL, NULL, 0);
	mutex_unlock(&lock);
	if (!result)
		netif_start_queue(dev);
	return result;
}

static int sim_stop(struct net_device *dev)
{
	netif_stop_queue(dev);
	mutex_lock(&lock);
	note("stop", dev, 0, NULL, NULL, NULL, 0);
	mutex_unlock(&lock);
	return 0;
}

static netdev_tx_t sim_xmit(struct sk_buff *skb, struct net_device *dev)
{
	dev->stats.tx_dropped++;
	dev_kfree_skb(skb);
	return NETDEV_TX_OK;
}

static const struct net_device_ops sim_ops = {
	.ndo_open = sim_open,
	.ndo_stop = sim_stop,
	.ndo_start_xmit = sim_xmit,
};

static const iw_handler sim_private[] = { sim_set };
static const struct iw_priv_args sim_private_args[] = {
	{ SIOCIWFIRSTPRIV, IW_PRIV_TYPE_CHAR | SET_MAX, 0, "set" },
};
static const struct iw_handler_def sim_handlers = {
	.num_private = ARRAY_SIZE(sim_private),
	.num_private_args = ARRAY_SIZE(sim_private_args),
	.private = sim_private,
	.private_args = sim_private_args,
};

static void put_text(struct seq_file *m, const char *text, size_t n)
{
	const unsigned char *c = (const unsigned char *)text;

	for (; n; c++, n--) {
		if (*c < 0x20 || *c > 0x7e || *c == '\\')
			seq_printf(m, "\\%03o", *c);
		else
			seq_putc(m, *c);
	}
}

static int log_show(struct seq_file *m, void *v)
{
	struct record *r;

	mutex_lock(&lock);
	list_for_each_entry(r, &records, list) {
		if (strcmp(r->kind, "set")) {
			seq_printf(m, "%s %s %d\n", r->kind, r->ifname, r->result);
			continue;
		}
		seq_printf(m, "set %s 0x%04x %u 0x%04x %d ", r->ifname, r->cmd,
			   r->len, r->flags, r->result);
		put_text(m, r->data, r->len);
		seq_putc(m, '\n');
	}
	if (lost)
		seq_printf(m, "lost %zu\n", lost);
	mutex_unlock(&lock);
	return 0;
}

static void clear_log(void)
{
	struct record *r, *next;

	list_for_each_entry_safe(r, next, &records, list)
		kfree(r);
	INIT_LIST_HEAD(&records);
	logged = lost = 0;
}

static int state_show(struct seq_file *m, void *v)
{
	struct setting *s;
	int i;

	mutex_lock(&lock);
	for (i = 0; i < ARRAY_SIZE(devs); i++) {
		struct sim *sim = netdev_priv(devs[i]);

		list_for_each_entry(s, &sim->settings, list) {
			seq_printf(m, "%s ", devs[i]->name);
			put_text(m, s->text, s->keylen);
			seq_putc(m, '=');
			put_text(m, s->value, s->len);
			seq_putc(m, '\n');
		}
	}
	mutex_unlock(&lock);
	return 0;
}

static int fail_show(struct seq_file *m, void *v)
{
	mutex_lock(&lock);
	seq_printf(m, "%s\n", fail);
	mutex_unlock(&lock);
	return 0;
}

static int log_open(struct inode *inode, struct file *file)
{
	return single_open(file, log_show, NULL);
}

static int state_open(struct inode *inode, struct file *file)
{
	return single_open(file, state_show, NULL);
}

static int fail_open(struct inode *inode, struct file *file)
{
	return single_open(file, fail_show, NULL);
}

static ssize_t log_write(struct file *file, const char __user *buf, size_t n, loff_t *pos)
{
	mutex_lock(&lock);
	clear_log();
	mutex_unlock(&lock);
	return n;
}

static ssize_t fail_write(struct file *file, const char __user *buf, size_t n, loff_t *pos)
{
	char *text;

	if (n > SET_MAX)
		return -EINVAL;
	/* On the heap: the text on the stack would pass ARM's 1,024-byte frame limit. */
	text = memdup_user_nul(buf, n);
	if (IS_ERR(text))
		return PTR_ERR(text);
	strim(text); /* echo's line end */
	mutex_lock(&lock);
	strscpy(fail, text, sizeof(fail));
	mutex_unlock(&lock);
	kfree(text);
	return n;
}

#define PROC_OPS(name, write) { \
	.proc_open = name##_open, .proc_read = seq_read, .proc_lseek = seq_lseek, \
	.proc_release = single_release, .proc_write = write }
static const struct proc_ops log_ops = PROC_OPS(log, log_write);
static const struct proc_ops state_ops = PROC_OPS(state, NULL);
static const struct proc_ops fail_ops = PROC_OPS(fail, fail_write);

static void sim_cleanup(void)
{
	struct setting *s, *next;
	int i;

	proc_remove(dir);
	for (i = 0; i < ARRAY_SIZE(devs) && devs[i]; i++) {
		struct sim *sim = netdev_priv(devs[i]);

		if (devs[i]->reg_state == NETREG_REGISTERED)
			unregister_netdev(devs[i]);
		list_for_each_entry_safe(s, next, &sim->settings, list)
			kfree(s);
		free_netdev(devs[i]);
	}
	clear_log();
}

static int __init sim_init(void)
{
	/* Ralink's prefix; the fifth byte tells VAPs (0x60) from WDS links (0x61). */
	u8 mac[ETH_ALEN] = { 0x00, 0x0c, 0x43, 0x28, 0x60, 0x00 };
	int i, err = -ENOMEM;

	for (i = 0; i < ARRAY_SIZE(devs); i++) {
		struct net_device *dev = alloc_etherdev(sizeof(struct sim));

		if (!dev)
			goto out;
		devs[i] = dev;
		INIT_LIST_HEAD(&((struct sim *)netdev_priv(dev))->settings);
		snprintf(dev->name, IFNAMSIZ, "%s%d", i < 4 ? "vap" : "wds", i % 4);
		mac[4] = 0x60 + i / 4;
		mac[5] = i % 4;
		eth_hw_addr_set(dev, mac);
		dev->netdev_ops = &sim_ops;
		dev->wireless_handlers = &sim_handlers;
		err = register_netdev(dev);
		if (err)
			goto out;
	}
	err = -ENOMEM;
	dir = proc_mkdir("rt2860sim", NULL);
	if (!dir || !proc_create("log", 0644, dir, &log_ops) ||
	    !proc_create("state", 0444, dir, &state_ops) ||
	    !proc_create("fail", 0644, dir, &fail_ops))
		goto out;
	return 0;
out:
	sim_cleanup();
	return err;
}

static void __exit sim_exit(void)
{
	sim_cleanup();
}

module_init(sim_init);
module_exit(sim_exit);
MODULE_LICENSE("GPL");
MODULE_DESCRIPTION("Simulated RT2860 access point driver: configuration interface only");
