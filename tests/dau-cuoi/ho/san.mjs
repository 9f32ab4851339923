// The stage of a test: the rendezvous server, Tovira and the controller's browser, and what people do with them.
import { mkdtemp, rm } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { docCaiDat } from '../../../may-chu/nguon/cai-dat.js';
import { moMayChu } from '../../../may-chu/nguon/may-chu.js';
import { NhatKy } from '../../../may-chu/nguon/nhat-ky.js';
import { MayTovira } from './may-tovira.mjs';
import { diaChi, rieng } from './the-gioi.mjs';
import { TrinhDuyet } from './trinh-duyet.mjs';

export class San {
  // trinhDuyet: how the controller's browser is opened; null: without one.
  static async mo({ chuongTrinh, trinhDuyet = {} }) {
    const san = new San();
    san.dong_ = [];
    try {
      san.tam = await mkdtemp(join(tmpdir(), 'tovira-dau-cuoi-'));
      san.dong_.push(() => rm(san.tam, { recursive: true, force: true, maxRetries: 5 }));
      const caiDat = docCaiDat([], { CONG: '0', STUN_CONG: '0', DIA_CHI: rieng ? '' : diaChi.mayChu });
      san.mayChu = await moMayChu(caiDat, { nhatKy: new NhatKy(() => {}) });
      san.dong_.push(() => san.mayChu.dong());
      san.goc = `http://${diaChi.mayChu}:${san.mayChu.cong}`;
      san.may = await MayTovira.mo({ chuongTrinh, goc: san.goc, nha: join(san.tam, 'nha') });
      san.dong_.push(() => san.may.tat());
      if (trinhDuyet) {
        san.khach = await TrinhDuyet.mo({ thuMuc: san.tam, ...trinhDuyet });
        san.dong_.push(() => san.khach.dong());
      }
    } catch (loi) {
      await san.dong();
      throw loi;
    }
    return san;
  }

  // Machine code and password as the host shows them once the server knows it.
  docMa() {
    return this.may.cho('code and password', `(() => {
      const doc = (id) => document.getElementById(id)?.dataset;
      return doc('tinh-may-chu')?.tinh === 'san-sang' && { ma: doc('ma-may').gia, matKhau: doc('mat-khau').gia };
    })()`);
  }

  // A person enters code and password on the page of the server at `goc`.
  async goi({ ma, matKhau, goc = this.goc }) {
    await this.khach.toi(`${goc}/app`);
    await this.khach.go('#k-ma', ma);
    await this.khach.go('#k-mat', matKhau);
    await this.khach.bam('#k-noi');
  }

  async dong() {
    for (const viec of this.dong_.splice(0).reverse()) await viec();
  }
}
