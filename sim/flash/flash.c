// SPDX-License-Identifier: GPL-2.0
/*
 * A NAND-like MTD device over the power-cut machine's shared memory (qemu's
 * ivshmem-plain, its BAR 2): the region is a file on the host, so what this
 * device has written when qemu is killed is what a power cut leaves on flash.
 * The kernel's phram has no write-buffer size, which UBI requires, and its
 * nandsim keeps its page map in RAM, which a reboot loses.
 */
#include <linux/io.h>
#include <linux/module.h>
#include <linux/mtd/mtd.h>
#include <linux/pci.h>

#define PAGE_BYTES 2048
#define BLOCK_BYTES (128 * 1024)

struct flash {
	struct mtd_info mtd;
	u8 *mem;
};

static int flash_erase(struct mtd_info *mtd, struct erase_info *ei)
{
	struct flash *f = mtd->priv;

	memset(f->mem + ei->addr, 0xff, ei->len);
	return 0;
}

static int flash_read(struct mtd_info *mtd, loff_t from, size_t len,
		      size_t *retlen, u_char *buf)
{
	struct flash *f = mtd->priv;

	memcpy(buf, f->mem + from, len);
	*retlen = len;
	return 0;
}

static int flash_write(struct mtd_info *mtd, loff_t to, size_t len,
		       size_t *retlen, const u_char *buf)
{
	struct flash *f = mtd->priv;

	memcpy(f->mem + to, buf, len);
	*retlen = len;
	return 0;
}

static int flash_probe(struct pci_dev *pdev, const struct pci_device_id *id)
{
	resource_size_t size = pci_resource_len(pdev, 2);
	struct flash *f;
	int err = pcim_enable_device(pdev);

	if (err)
		return err;
	if (size < BLOCK_BYTES || size % BLOCK_BYTES)
		return -EINVAL;
	f = devm_kzalloc(&pdev->dev, sizeof(*f), GFP_KERNEL);
	if (!f)
		return -ENOMEM;
	f->mem = devm_memremap(&pdev->dev, pci_resource_start(pdev, 2), size,
			       MEMREMAP_WB);
	if (IS_ERR(f->mem))
		return PTR_ERR(f->mem);
	f->mtd.name = "flash";
	f->mtd.type = MTD_NANDFLASH;
	f->mtd.flags = MTD_CAP_NANDFLASH;
	f->mtd.size = size;
	f->mtd.erasesize = BLOCK_BYTES;
	f->mtd.writesize = PAGE_BYTES;
	/* UBI refuses a device whose write-buffer size is 0. */
	f->mtd.writebufsize = PAGE_BYTES;
	f->mtd._erase = flash_erase;
	f->mtd._read = flash_read;
	f->mtd._write = flash_write;
	f->mtd.priv = f;
	f->mtd.owner = THIS_MODULE;
	f->mtd.dev.parent = &pdev->dev;
	pci_set_drvdata(pdev, f);
	return mtd_device_register(&f->mtd, NULL, 0);
}

static void flash_remove(struct pci_dev *pdev)
{
	struct flash *f = pci_get_drvdata(pdev);

	mtd_device_unregister(&f->mtd);
}

/* qemu's ivshmem */
static const struct pci_device_id flash_ids[] = {
	{ PCI_DEVICE(0x1af4, 0x1110) },
	{ }
};
MODULE_DEVICE_TABLE(pci, flash_ids);

static struct pci_driver flash_driver = {
	.name = "flash",
	.id_table = flash_ids,
	.probe = flash_probe,
	.remove = flash_remove,
};
module_pci_driver(flash_driver);

MODULE_DESCRIPTION("NAND-like MTD device over qemu's shared memory");
MODULE_LICENSE("GPL");
