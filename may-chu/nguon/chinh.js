#!/usr/bin/env node
// Starts the server, keeps it until it is asked to end, ends it in order.
import { LoiCaiDat, docCaiDat, loiGiup } from './cai-dat.js';
import { moMayChu } from './may-chu.js';
import { NhatKy } from './nhat-ky.js';

const HAN_DONG = 5000; // ms for an orderly end

function hong(loi) {
  const vi = { EADDRINUSE: 'the port is taken', EACCES: 'not allowed' }[loi.code];
  process.stderr.write(`tovira-may-chu: ${vi ? `${loi.syscall} port ${loi.port}: ${vi}` : loi.message}\n`);
  process.exit(loi instanceof LoiCaiDat ? 2 : 1);
}

async function chay() {
  const caiDat = docCaiDat(process.argv.slice(2), process.env);
  if (caiDat === null) return process.stdout.write(loiGiup());
  const nhatKy = new NhatKy();
  const mayChu = await moMayChu(caiDat, { nhatKy });
  nhatKy.ghi('nghe', { cong: mayChu.cong, stun: mayChu.stunCong, https: caiDat.chungChi !== '', redis: caiDat.redisUrl !== '' });

  let dangDong = false;
  const dong = async (tinHieu) => {
    if (dangDong) return;
    dangDong = true;
    nhatKy.ghi('dong', { vi: tinHieu });
    setTimeout(() => process.exit(1), HAN_DONG).unref();
    await mayChu.dong();
    process.exit(0);
  };
  process.on('SIGTERM', dong);
  process.on('SIGINT', dong);
  process.on('SIGHUP', () => {
    try {
      mayChu.napChungChi();
      nhatKy.ghi('chung-chi-nap-lai');
    } catch (loi) {
      nhatKy.ghi('chung-chi-hong', { loi: loi.message });
    }
  });
  return undefined;
}

chay().catch(hong);
